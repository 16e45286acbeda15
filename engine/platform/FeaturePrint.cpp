#include "FeaturePrint.hpp"

namespace brevant::platform {

std::optional<FeaturePrint::Made> FeaturePrint::make(const DecodedImage& /*image*/) {
    return std::nullopt;
}

std::optional<FeaturePrint::Observation>
FeaturePrint::observation(std::span<const std::uint8_t> /*bytes*/) {
    return std::nullopt;
}

std::optional<float> FeaturePrint::distance(const Observation& /*a*/, const Observation& /*b*/) {
    return std::nullopt;
}

} // namespace brevant::platform
