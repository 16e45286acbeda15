#pragma once

#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/similarity/ImageFeatures.hpp"
#include "engine/similarity/SimilarPair.hpp"
#include "engine/similarity/SimilarityIndex.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// Builds the similarity index: proposes candidate pairs cheaply from shared
// hash bytes and capture times, and evaluates each candidate once.
class FeatureCache;
struct DuplicateGroup;

struct SimilarityMatcher {
    // Called with the number of pictures done so far, always on the thread
    // that called the matcher.
    using Progress = std::function<void(int)>;

    struct Candidates {
        std::vector<SimilarPair> pairs; // evaluated and kept, sorted by (a, b)
        std::int64_t proposed = 0;
    };

    // Measures every picture (through the cache when there is one, which is
    // saved at the end) and builds the index; nothing when cancelled.
    [[nodiscard]] static std::optional<SimilarityIndex>
    index(std::vector<PhotoAsset> pictures, FeatureCache* cache, bool withFeaturePrint,
          const CancellationFlag& cancel, const Progress& progress);

    // The index over already measured pictures; nothing when cancelled.
    [[nodiscard]] static std::optional<SimilarityIndex>
    index(std::vector<PhotoAsset> pictures, std::vector<std::optional<ImageFeatures>> features,
          std::vector<std::string> unmeasured, const CancellationFlag& cancel);

    // Reads faces for the members of these groups (through the cache when
    // there is one, which is saved at the end) and answers the index with
    // the readings attached; nothing when cancelled.
    [[nodiscard]] static std::optional<SimilarityIndex>
    checkFaces(const std::vector<DuplicateGroup>& groups, const SimilarityIndex& index,
               FeatureCache* cache, const CancellationFlag& cancel, const Progress& progress);

    // Candidate pairs, evaluated; nothing when cancelled.
    [[nodiscard]] static std::optional<Candidates>
    candidatePairs(const std::vector<PhotoAsset>& pictures,
                   const std::vector<std::optional<ImageFeatures>>& features,
                   const CancellationFlag& cancel);
};

} // namespace brevant
