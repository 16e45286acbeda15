#pragma once

#include "engine/similarity/SimilarPair.hpp"
#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string_view>

namespace brevant {

// How far apart two pictures may be and still count as one photo.
enum class SimilarityPreset {
    conservative,
    balanced,
    broad,
};

template <> struct EnumCases<SimilarityPreset> {
    static constexpr std::array kAll{SimilarityPreset::conservative, SimilarityPreset::balanced,
                                     SimilarityPreset::broad};
};

[[nodiscard]] std::string_view rawValue(SimilarityPreset preset);
// "Conservative", "Balanced", "Broad".
[[nodiscard]] std::string_view displayName(SimilarityPreset preset);
[[nodiscard]] std::string_view explanation(SimilarityPreset preset);
[[nodiscard]] double maxDistance(SimilarityPreset preset);
[[nodiscard]] bool accepts(SimilarityPreset preset, const SimilarPair& pair);
void PrintTo(SimilarityPreset preset, std::ostream* os);

} // namespace brevant
