#pragma once

namespace brevant {

// The distances that decide likeness, in bits of the 64-bit hash (detail in
// bits of the 256-bit detail hash).
struct SimilarityThresholds {
    static constexpr double kConservative = 12.0;
    static constexpr int kConservativeDetail = 18;
    static constexpr double kBalanced = 12.0;
    static constexpr double kBroad = 16.0;
    static constexpr double kCacheLimit = 20.0;
    static constexpr int kCandidateHamming = 20;
    static constexpr double kSeriesRelated = 34.0;
    // Pairs further apart than the broadest preset accepts are not kept,
    // except those series can use (time neighbours up to kSeriesRelated).
    static constexpr int kKeptHamming = static_cast<int>(kBroad);
    // Shots of one folder this close in time are compared whatever their
    // hashes, so that bursts are seen.
    static constexpr double kTimeNeighbourSeconds = 60.0;
};

} // namespace brevant
