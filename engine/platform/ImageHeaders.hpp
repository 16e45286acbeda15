#pragma once

#include "engine/scan/PhotoFormat.hpp"

#include <optional>
#include <string>

namespace brevant::platform {

struct PixelSize {
    int width = 0;
    int height = 0;

    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

// Picture headers through libvips. Only the header is read, never the
// pixels: every picture found passes through here, so it must stay cheap.
struct ImageHeaders {
    // A libvips loader for the format exists in this process (JPEG, PNG,
    // HEIC and TIFF; never RAW or other, which libvips does not decode here).
    [[nodiscard]] static bool canDecode(PhotoFormat format);

    // The pixel size in the header. The loader is chosen by the file's
    // contents, so a JPEG named .png is read as the JPEG it is; `named` is
    // the format its name says, tried first. Nothing when the file cannot be
    // opened, is no picture or its header cannot be read.
    [[nodiscard]] static std::optional<PixelSize> pixelSize(const std::string& path,
                                                            PhotoFormat named);
};

} // namespace brevant::platform
