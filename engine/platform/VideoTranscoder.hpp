#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <string>
#include <sys/types.h>

namespace brevant::platform {

// How a video copy is written.
struct VideoEncoding {
    // The largest stored size: the long side, then the short side (1080p).
    int maxLongSide = 1920;
    int maxShortSide = 1080;
    // x265's constant rate factor and speed preset.
    int crf = 28;
    std::string preset = "medium";
    // Every pixel kept exactly (much larger; for tests of the size check).
    bool lossless = false;
    // The sound streams go with the picture.
    bool keepSound = true;

    friend bool operator==(const VideoEncoding&, const VideoEncoding&) = default;
};

// Writes HEVC copies of videos with libavformat, libavcodec (x265),
// libswscale and libswresample: the picture at most `maxLongSide` by
// `maxShortSide`, its aspect kept, tagged hvc1 so that Apple's players
// take it; every sound stream copied as it is (or made AAC when the
// container cannot hold it); the container's metadata (dates, location) and
// the picture's rotation kept. The container is the original's kind: MP4
// for MP4 and M4V, QuickTime for everything else.
struct VideoTranscoder {
    // Called after each frame written, with the count so far and the count
    // expected (0 when the container does not say).
    using Progress = std::function<void(std::int64_t frames, std::int64_t total)>;

    struct Written {
        std::int64_t frames = 0;
        int width = 0;
        int height = 0;
    };

    // Reads `source` (never through a final symbolic link) and writes the
    // copy into `destination`, which must not exist: it is created
    // exclusively with `permissions` and forced to the storage device when
    // done. On an error a part-written file may be left at `destination`
    // for the caller to remove; the reason is said as libav words it.
    [[nodiscard]] static std::expected<Written, std::string>
    transcode(const std::string& source, const std::string& destination, mode_t permissions,
              const VideoEncoding& encoding, const Progress& progress = {});

    struct Size {
        int width = 0;
        int height = 0;

        friend bool operator==(const Size&, const Size&) = default;
    };

    // The stored size a picture of this size is written at: shrunk to fit
    // the limits (never enlarged), aspect kept, both sides even.
    [[nodiscard]] static Size targetSize(int width, int height, const VideoEncoding& encoding);
};

} // namespace brevant::platform
