#pragma once

#include "engine/scan/DuplicateGroup.hpp"
#include "engine/similarity/SimilarityIndex.hpp"

#include <string>
#include <unordered_map>

namespace brevant {

// Short remarks that help choose within a group of similar photos, drawn
// from the stored measurements only.
struct QualityHints {
    static constexpr double kSharpnessMargin = 1.5;
    static constexpr double kExposureMargin = 0.12;
    static constexpr double kClippedMargin = 0.08;

    using ByPath = std::unordered_map<std::string, std::string>;

    // At most one hint per member: sharpest, then darker or brighter, then
    // clipped. Empty for a single member or when any member is unmeasured.
    [[nodiscard]] static ByPath hints(const DuplicateGroup& group, const SimilarityIndex& index);

    // Every member's quality score, or nothing when any member lacks one.
    [[nodiscard]] static std::unordered_map<std::string, int> scores(const DuplicateGroup& group,
                                                                     const SimilarityIndex& index);

    // Eyes and smiles, when every member has a face reading.
    [[nodiscard]] static ByPath faceNotes(const DuplicateGroup& group,
                                          const SimilarityIndex& index);
};

} // namespace brevant
