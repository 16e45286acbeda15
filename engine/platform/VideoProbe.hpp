#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace brevant::platform {

// One sound stream of a video.
struct SoundStream {
    // libav's codec name ("aac", "pcm_s16le").
    std::string codec;
    int channels = 0;
    int sampleRate = 0;

    friend bool operator==(const SoundStream&, const SoundStream&) = default;
};

// What a video's container and streams say, read without decoding.
struct VideoFacts {
    // libav's name of the container ("mov,mp4,m4a,3gp,3g2,mj2", "matroska,webm").
    std::string container;
    // The video's codec ("h264", "hevc").
    std::string codec;
    // The stored pixel size.
    int width = 0;
    int height = 0;
    // Quarter turns clockwise the player applies: 0, 90, 180, 270.
    int rotation = 0;
    double durationSeconds = 0;
    // Frames a second, on average.
    double frameRate = 0;
    // The frames the container counts; 0 when it does not say.
    std::int64_t frameCount = 0;
    std::vector<SoundStream> sound;
    // The container's "creation_time" and "location" (or Apple's own
    // location key), as written.
    std::optional<std::string> creationTime;
    std::optional<std::string> location;
    // Apple's own keys: the identifier that ties a Live Photo's movie to its
    // photo, and the creation date with its zone ("2024-05-01T12:20:30+0200").
    std::optional<std::string> contentIdentifier;
    std::optional<std::string> appleCreationDate;

    // The size as shown, after the rotation.
    [[nodiscard]] int displayedWidth() const { return rotation % 180 == 0 ? width : height; }

    [[nodiscard]] int displayedHeight() const { return rotation % 180 == 0 ? height : width; }

    friend bool operator==(const VideoFacts&, const VideoFacts&) = default;
};

// Reads videos' facts through libavformat.
struct VideoProbe {
    // The facts, or why the file cannot be read as a video (a sentence
    // fragment from the library).
    [[nodiscard]] static std::expected<VideoFacts, std::string> read(const std::string& path);
};

} // namespace brevant::platform
