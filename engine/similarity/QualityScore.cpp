#include "QualityScore.hpp"

#include <algorithm>
#include <cmath>

namespace brevant {

QualityScore::Result QualityScore::score(const platform::DecodedImage& /*image*/) {
    return {};
}

int QualityScore::points(double raw) {
    if (std::isnan(raw) || raw <= -1) {
        return 0;
    }
    return static_cast<int>(std::lround((std::min(raw, 1.0) + 1) * 50));
}

} // namespace brevant
