#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace brevant::platform {

// What ties the two halves of a Live Photo together, as one half says it.
struct LiveTags {
    // Apple's content identifier: the photo's maker note, the movie's
    // QuickTime metadata.
    std::optional<std::string> contentIdentifier;
    // When it was taken, in seconds since 1970.
    std::optional<std::int64_t> captured;
    // The movie's length; absent for a photo.
    std::optional<double> durationSeconds;

    friend bool operator==(const LiveTags&, const LiveTags&) = default;
};

// Reads the tags with exiv2 (photos) and libavformat (movies), never
// through a final symbolic link. A file that cannot be read says nothing.
struct LivePhotoTags {
    [[nodiscard]] static LiveTags ofPhoto(const std::string& path);
    [[nodiscard]] static LiveTags ofMovie(const std::string& path);

    // "2024-05-01T10:20:30.000000Z", "2024-05-01T12:20:30+0200" or with
    // "+02:00": seconds since 1970. A date without a zone is read in the
    // system's time zone.
    [[nodiscard]] static std::optional<std::int64_t> isoSeconds(const std::string& text);
    // EXIF's "2024:05:01 12:20:30" with its offset ("+02:00") when there is
    // one, else in the system's time zone.
    [[nodiscard]] static std::optional<std::int64_t>
    exifSeconds(const std::string& text, const std::optional<std::string>& offset);
};

} // namespace brevant::platform
