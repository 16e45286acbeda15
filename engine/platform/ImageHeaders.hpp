#pragma once

#include <optional>
#include <string>

namespace brevant::platform {

struct PixelSize {
    int width = 0;
    int height = 0;

    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

// The libvips loaders a picture's name can point to.
enum class ImageLoader {
    jpeg,
    png,
    heic,
    tiff,
    webp,
    avif,
    gif,
    jxl,
};

// Picture headers through libvips. Only the header is read, never the
// pixels: every picture found passes through here, so it must stay cheap.
struct ImageHeaders {
    // The libvips loader exists in this process (HEIC and AVIF need libheif,
    // AVIF also one of its AV1 decoders, JPEG XL a libvips built with libjxl).
    [[nodiscard]] static bool canDecode(ImageLoader loader);

    // The pixel size in the header. The loader is chosen by the file's
    // contents, so a JPEG named .png is read as the JPEG it is; `named` is
    // the loader its name points to, tried first. Nothing when the file cannot be
    // opened, is no picture or its header cannot be read.
    [[nodiscard]] static std::optional<PixelSize> pixelSize(const std::string& path,
                                                            ImageLoader named);
};

} // namespace brevant::platform
