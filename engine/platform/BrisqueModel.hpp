#pragma once

#include "engine/platform/DecodedImage.hpp"

#include <optional>

namespace brevant::platform {

// OpenCV's BRISQUE no-reference quality model (trained on the LIVE
// database). Lower is better: about 0 to 100 for ordinary photos.
struct BrisqueModel {
    // Nothing when the model files are missing or the picture is unusable.
    [[nodiscard]] static std::optional<double> score(const DecodedImage& image);
};

} // namespace brevant::platform
