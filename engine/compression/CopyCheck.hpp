#pragma once

#include "engine/compression/CompressionPlan.hpp"
#include "engine/platform/VideoTranscoder.hpp"

#include <optional>
#include <string>

namespace brevant {

// The checks a copy passes before its original may go: nothing when it
// passed, else why not as a sentence.
//
// Photos: the copy decodes completely and shows the same pixel size, the
// same way up, with the same capture date, EXIF, XMP and colour profile.
// Videos: every frame decodes without an error, the duration is the same
// within one frame, the sound streams are as many, with the same channels
// and rates,
// the capture date and place are kept, the rotation is kept and the stored
// size is the original's shrunk to fit 1080p with its aspect kept. Every
// copy is smaller than its original and shows the same picture: the
// perceptual hash of the copy (of a video's middle frame) is within
// kMaxHashBits of the original's.
// Motion photos: the still decodes completely to exactly the original's
// pixels, its XMP no longer declares a movie, every other EXIF and XMP tag
// is kept as it was, and it is smaller.
struct CopyCheck {
    static constexpr int kMaxHashBits = 4;

    [[nodiscard]] static std::optional<std::string>
    check(const PlannedCompression& item, const std::string& copy,
          const platform::VideoEncoding& encoding = {});

    [[nodiscard]] static std::optional<std::string> checkPhoto(const std::string& original,
                                                               const std::string& copy);

    [[nodiscard]] static std::optional<std::string> checkStill(const std::string& original,
                                                               const std::string& still);
    [[nodiscard]] static std::optional<std::string>
    checkVideo(const std::string& original, const std::string& copy,
               const platform::VideoEncoding& encoding);

    // The copy's bytes against the original's.
    [[nodiscard]] static std::optional<std::string> checkSmaller(const std::string& original,
                                                                 const std::string& copy);
};

} // namespace brevant
