#pragma once

#include "engine/platform/DecodedImage.hpp"

#include <optional>
#include <string>

namespace brevant::platform {

// A part of an upright picture at the file's own resolution.
struct PictureRegion {
    DecodedImage pixels;
    // Where the part lies in the upright picture, in its pixels.
    int left = 0;
    int top = 0;
    // The upright picture's whole size.
    int fullWidth = 0;
    int fullHeight = 0;
};

// Decodes the part of a picture a zoomed view shows, at full resolution, so
// that noise and compression damage can be judged pixel for pixel.
struct RegionDecoder {
    // A part, given as fractions (0 to 1) of the upright picture, widened to
    // whole pixels. The orientation tag is applied first. Nothing for camera
    // RAW files (their previews are all a view can show quickly), for an
    // empty part, or when the file cannot be decoded.
    [[nodiscard]] static std::optional<PictureRegion>
    decode(const std::string& path, double left, double top, double width, double height);

    // Parts larger than this many pixels are not decoded.
    static constexpr long long kMaxPixels = 40'000'000;
};

} // namespace brevant::platform
