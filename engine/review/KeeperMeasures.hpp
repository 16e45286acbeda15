#pragma once

#include "engine/review/KeeperPolicy.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/similarity/FaceReading.hpp"
#include "engine/similarity/SimilarityIndex.hpp"

#include <functional>
#include <optional>

namespace brevant {

// The measurements the keeper policy compares (sharpness, quality score,
// face reading), drawn from what a scan's similarity pass produced. Build it
// from the index after the face check has attached its readings
// (SimilarityMatcher::checkFaces), so the face priorities have something to
// compare; pictures the index does not hold, or whose file changed since it
// was measured, answer nothing and the priorities abstain for them.
struct KeeperMeasures {
    std::function<std::optional<double>(const PhotoAsset&)> sharpness;
    std::function<std::optional<int>(const PhotoAsset&)> quality;
    std::function<std::optional<FaceReading>(const PhotoAsset&)> faces;

    // Keeps a compact copy of what it needs (by path), not the index, so it
    // may outlive the index and be copied freely.
    [[nodiscard]] static KeeperMeasures from(const SimilarityIndex& index);

    // Puts the three measures into a keeper context.
    void applyTo(KeeperPolicy::Context& context) const;
};

} // namespace brevant
