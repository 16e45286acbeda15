#pragma once

#include "engine/platform/DecodedImage.hpp"

#include <optional>
#include <string>

namespace brevant::platform {

// What a picture's header says, as stored in the file.
struct ImageProperties {
    // The stored pixel size, before the orientation tag turns it.
    std::optional<int> pixelWidth;
    std::optional<int> pixelHeight;
    // The EXIF orientation tag, 1-8.
    std::optional<int> orientation;
    // The EXIF DateTimeOriginal text as written ("yyyy:MM:dd HH:mm:ss").
    std::optional<std::string> dateTimeOriginal;
};

struct DecodedPicture {
    DecodedImage thumbnail;
    ImageProperties properties;
};

// Decodes pictures into upright thumbnails.
struct ImageDecoder {
    // One decode of the file: an upright thumbnail no larger than `maxSide`
    // on its long side (never enlarged; decoders shrink while loading where
    // they can), with the header's properties. Camera RAW files (known by
    // their extension) use the embedded preview when its long side is at
    // least `kMinPreviewSide`, else a half-size decode. Nothing when the file
    // cannot be read as a picture.
    [[nodiscard]] static std::optional<DecodedPicture> decode(const std::string& path, int maxSide);

    static constexpr int kMinPreviewSide = 512;
};

} // namespace brevant::platform
