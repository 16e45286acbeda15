#pragma once

#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/similarity/ImageFeatures.hpp"
#include "engine/similarity/SimilarPair.hpp"
#include "engine/similarity/SimilarityIndex.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// Builds the similarity index: proposes candidate pairs cheaply from shared
// hash bytes and capture times, and evaluates each candidate once.
struct SimilarityMatcher {
    struct Candidates {
        std::vector<SimilarPair> pairs; // evaluated and kept, sorted by (a, b)
        std::int64_t proposed = 0;
    };

    // The index over already measured pictures; nothing when cancelled.
    [[nodiscard]] static std::optional<SimilarityIndex>
    index(std::vector<PhotoAsset> pictures, std::vector<std::optional<ImageFeatures>> features,
          std::vector<std::string> unmeasured, const CancellationFlag& cancel);

    // Candidate pairs, evaluated; nothing when cancelled.
    [[nodiscard]] static std::optional<Candidates>
    candidatePairs(const std::vector<PhotoAsset>& pictures,
                   const std::vector<std::optional<ImageFeatures>>& features,
                   const CancellationFlag& cancel);
};

} // namespace brevant
