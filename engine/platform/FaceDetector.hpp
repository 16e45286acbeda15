#pragma once

#include "engine/platform/DecodedImage.hpp"

#include <optional>
#include <vector>

namespace brevant::platform {

// One face as the detectors saw it, in the picture's pixels.
struct DetectedFace {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool leftEyeClosed = false; // on the picture's left
    bool rightEyeClosed = false;
    bool smiling = false;
};

// OpenCV's Haar cascades for faces, open eyes and smiles. Each thread gets
// its own detectors, since a cascade must never be used by two threads at
// once; they are loaded on a thread's first use.
struct FaceDetector {
    // Every face at least `minWidth` pixels wide; nothing when the detector
    // files cannot be loaded or the picture is unusable.
    [[nodiscard]] static std::optional<std::vector<DetectedFace>> detect(const DecodedImage& image,
                                                                         int minWidth);
};

} // namespace brevant::platform
