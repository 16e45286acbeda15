#pragma once

#include "engine/platform/DecodedImage.hpp"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>

namespace brevant::platform {

// A video's picture decoded from start to end.
struct DecodedVideo {
    std::int64_t frames = 0;
    // Packets the container could not give, and packets or frames the
    // decoder refused or marked damaged.
    int errors = 0;
    // From the first frame's start to the last frame's end.
    double durationSeconds = 0;
    // The first frame shown at or after the time asked for, as stored (the
    // rotation not applied).
    std::optional<DecodedImage> frame;
};

// Decodes videos' pictures through libavformat and libavcodec.
struct VideoDecoding {
    // Every frame of the video stream, strictly: damage the decoder notices
    // is counted, not concealed. Refused only when the file cannot be opened
    // as a video at all.
    [[nodiscard]] static std::expected<DecodedVideo, std::string> decodeAll(const std::string& path,
                                                                            double frameAtSeconds);

    // Only the first frame shown at or after `seconds` from the start.
    [[nodiscard]] static std::expected<DecodedImage, std::string> frameAt(const std::string& path,
                                                                          double seconds);
};

} // namespace brevant::platform
