#pragma once

#include "engine/scan/DuplicateGroup.hpp"
#include "engine/similarity/SimilarityIndex.hpp"
#include "engine/similarity/SimilarityPreset.hpp"

#include <optional>
#include <vector>

namespace brevant {

// Which groups a cleanup reviews. Identical copies are always among them;
// similar versions (under a preset) or series are added on request.
struct CleanupGroups {
    enum class Extra {
        none,
        similar,
        series,
    };

    // Series: shots of one folder at most this many seconds apart.
    static constexpr double kSeriesWindow = 3.0;

    Extra extra = Extra::none;
    SimilarityPreset preset = SimilarityPreset::balanced;

    // Similar versions and series need every picture measured.
    [[nodiscard]] bool needsIndex() const { return extra != Extra::none; }

    // The similar groups or series of the index, then every identical group
    // none of whose copies they already hold (a copy reviewed twice would be
    // judged twice), largest savings first. Without an index, the identical
    // groups as they are.
    [[nodiscard]] std::vector<DuplicateGroup> of(const std::vector<DuplicateGroup>& identical,
                                                 const SimilarityIndex* index) const;

    // `grouped`, then the identical groups apart from them, largest savings
    // first.
    [[nodiscard]] static std::vector<DuplicateGroup>
    withIdentical(std::vector<DuplicateGroup> grouped,
                  const std::vector<DuplicateGroup>& identical);
};

} // namespace brevant
