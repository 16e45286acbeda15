#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <sys/types.h>

namespace brevant::platform {

// A JPEG whose XMP declares a movie appended to it (Google's MotionPhoto or
// the older MicroVideo), as Android cameras write them.
struct MotionPhotoFacts {
    // The bytes of the photo itself, before the movie.
    std::int64_t stillBytes = 0;
    std::int64_t movieBytes = 0;

    friend bool operator==(const MotionPhotoFacts&, const MotionPhotoFacts&) = default;
};

// Reads and writes motion photos with exiv2 for the XMP and libvips for the
// pixels; files are read never through a final symbolic link and the still
// is created exclusively.
struct MotionPhoto {
    // The facts when the file is a motion photo whose appended movie is
    // where its XMP says; nothing otherwise.
    [[nodiscard]] static std::optional<MotionPhotoFacts> read(const std::string& path);

    // Writes the still: the photo's own bytes without the movie, its XMP
    // without the motion-photo properties, every other tag as it was.
    // Libraries' words when it cannot.
    [[nodiscard]] static std::expected<void, std::string>
    writeStill(const std::string& original, const std::string& still, mode_t permissions);

    // Whether the file's XMP still speaks of an appended movie.
    [[nodiscard]] static bool declaresMotion(const std::string& path);

    // Whether both decode to exactly the same pixels; nothing when either
    // cannot be decoded.
    [[nodiscard]] static std::optional<bool> samePixels(const std::string& a, const std::string& b);

    // The EXIF and XMP tags of `original` (apart from the motion-photo ones)
    // that `still` lacks or holds with another value, by name, joined by ", ";
    // empty when all are kept. Nothing when either cannot be read.
    [[nodiscard]] static std::optional<std::string> tagsLost(const std::string& original,
                                                             const std::string& still);
};

} // namespace brevant::platform
