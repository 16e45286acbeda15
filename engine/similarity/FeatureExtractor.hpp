#pragma once

#include "engine/similarity/ImageFeatures.hpp"

namespace brevant {

// Measures pictures into ImageFeatures and compares measurements.
struct FeatureExtractor {
    static constexpr int renditionSize = 512;

    struct HashMatch {
        int distance = 64;
        int turn = 0;

        friend bool operator==(const HashMatch&, const HashMatch&) = default;
    };

    // a's unturned hash against each of b's four turns: the smallest Hamming
    // distance and the first turn that reaches it; (64, 0) when b has none.
    [[nodiscard]] static HashMatch hashMatch(const ImageFeatures& a, const ImageFeatures& b);
    [[nodiscard]] static int hashDistance(const ImageFeatures& a, const ImageFeatures& b);

    // a's unturned detail hash against each of b's turns: the smallest
    // distance, 256 when either side has none.
    [[nodiscard]] static int detailDistance(const ImageFeatures& a, const ImageFeatures& b);

    // Aspect ratios within 1.35 of each other; with `turn`, b is compared on
    // exchanged sides (it matched at an odd quarter turn).
    [[nodiscard]] static bool shapesAgree(const ImageFeatures& a, const ImageFeatures& b,
                                          bool turn);
};

} // namespace brevant
