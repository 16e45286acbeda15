#pragma once

#include <expected>
#include <string>
#include <sys/types.h>

namespace brevant::platform {

// How a photo copy is written.
struct PhotoEncoding {
    // libheif's quality, 0-100 (heif-enc's -q).
    int quality = 50;
    // Every pixel kept exactly (much larger; for tests of the size check).
    bool lossless = false;
    // Shrinks the picture to this long side; 0 keeps its size (for tests of
    // the size check).
    int maxLongSide = 0;

    friend bool operator==(const PhotoEncoding&, const PhotoEncoding&) = default;
};

// Writes HEIC copies of photos with libheif's HEVC encoder (x265): the
// pixels as stored, with the orientation set explicitly as the container's
// own transform (libheif does not take it from EXIF), and the EXIF, XMP and
// colour profile carried over. Pictures in other colour spaces (CMYK,
// 16-bit) are made 8-bit sRGB first.
struct HeifWriter {
    struct Written {
        // The stored size.
        int width = 0;
        int height = 0;
    };

    // Reads `source` with libvips (never through a final symbolic link) and
    // writes `destination`, which must not exist: it is created exclusively
    // with `permissions` and forced to the storage device when done. On an
    // error a part-written file may be left for the caller to remove.
    [[nodiscard]] static std::expected<Written, std::string> write(const std::string& source,
                                                                   const std::string& destination,
                                                                   mode_t permissions,
                                                                   const PhotoEncoding& encoding);
};

} // namespace brevant::platform
