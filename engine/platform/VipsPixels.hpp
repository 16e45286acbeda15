#pragma once

// The libvips side of DecodedImage, for the platform layer's own files only.

#include "engine/platform/DecodedImage.hpp"

#include <optional>
#include <vips/vips8>

namespace brevant::platform {

struct DecodedImage::Pixels {
    vips::VImage image;
};

// The image made plain (alpha laid over black, 8-bit sRGB or grey) and held
// in memory, so the renderings made from it never decode the file again.
// Nothing when libvips fails, which is where a damaged file shows itself.
[[nodiscard]] std::optional<DecodedImage> plainDecodedImage(vips::VImage image);

} // namespace brevant::platform
