#include "QualityScore.hpp"

#include "engine/platform/BrisqueModel.hpp"

#include <algorithm>
#include <cmath>

namespace brevant {

const std::string& QualityScore::explanation() {
    static const std::string text =
        "Quality score, 0 to 100, from the BRISQUE image-quality model in OpenCV, run on this "
        "computer. It weighs sharpness, noise and compression damage, not how well the photo is "
        "framed. Use it to compare photos in this group, not as a grade: it is a model's opinion, "
        "and it can prefer the wrong one.";
    return text;
}

QualityScore::Result QualityScore::score(const platform::DecodedImage& image) {
    auto brisque = platform::BrisqueModel::score(image);
    if (!brisque || std::isnan(*brisque)) {
        return {};
    }
    return {points(rawFromBrisque(*brisque)), false, kRevision};
}

double QualityScore::rawFromBrisque(double brisque) {
    return std::clamp((50.0 - brisque) / 50.0, -1.0, 1.0);
}

int QualityScore::points(double raw) {
    if (std::isnan(raw) || raw <= -1) {
        return 0;
    }
    return static_cast<int>(std::lround((std::min(raw, 1.0) + 1) * 50));
}

} // namespace brevant
