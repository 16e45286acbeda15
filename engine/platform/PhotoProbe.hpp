#pragma once

#include <expected>
#include <optional>
#include <string>

namespace brevant::platform {

// What a photo's header says, as a viewer would show the photo.
struct PhotoFacts {
    // The size as shown: the stored size turned by the orientation (HEIC's
    // own transform is applied by the decoder already).
    int displayedWidth = 0;
    int displayedHeight = 0;
    // The EXIF orientation tag as written in the file's EXIF, 1-8.
    std::optional<int> exifOrientation;
    // The EXIF DateTimeOriginal text ("yyyy:MM:dd HH:mm:ss").
    std::optional<std::string> dateTimeOriginal;
    bool hasExif = false;
    bool hasXmp = false;
    bool hasColourProfile = false;

    friend bool operator==(const PhotoFacts&, const PhotoFacts&) = default;
};

// Reads photos through libvips (HEIC through libheif), never through a final
// symbolic link.
struct PhotoProbe {
    // The header's facts, or libvips's words for why it cannot be read.
    [[nodiscard]] static std::expected<PhotoFacts, std::string> read(const std::string& path);

    // Decodes every pixel, failing on any damage the decoder notices rather
    // than concealing it.
    [[nodiscard]] static std::expected<void, std::string> decodeFully(const std::string& path);
};

} // namespace brevant::platform
