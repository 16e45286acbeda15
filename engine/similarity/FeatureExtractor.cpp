#include "FeatureExtractor.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace brevant {

namespace {

constexpr double kShapeTolerance = 1.35;

} // namespace

FeatureExtractor::HashMatch FeatureExtractor::hashMatch(const ImageFeatures& a,
                                                        const ImageFeatures& b) {
    HashMatch best;
    if (a.hashes.empty() || b.hashes.empty()) {
        return best;
    }
    std::uint64_t unturned = a.hashes[0];
    for (std::size_t turn = 0; turn < b.hashes.size(); ++turn) {
        int distance = std::popcount(unturned ^ b.hashes[turn]);
        // A later equal distance keeps the earlier turn.
        if (turn == 0 || distance < best.distance) {
            best = {distance, static_cast<int>(turn)};
        }
    }
    return best;
}

int FeatureExtractor::hashDistance(const ImageFeatures& a, const ImageFeatures& b) {
    return hashMatch(a, b).distance;
}

int FeatureExtractor::detailDistance(const ImageFeatures& a, const ImageFeatures& b) {
    constexpr int kNone = 256;
    if (a.detailHashes.empty() || b.detailHashes.empty()) {
        return kNone;
    }
    const DetailHash& unturned = a.detailHashes[0];
    int best = kNone;
    for (const DetailHash& turned : b.detailHashes) {
        int distance = 0;
        for (std::size_t word = 0; word < unturned.size(); ++word) {
            distance += std::popcount(unturned[word] ^ turned[word]);
        }
        best = std::min(best, distance);
    }
    return best;
}

bool FeatureExtractor::shapesAgree(const ImageFeatures& a, const ImageFeatures& b, bool turn) {
    if (a.pixelHeight < 1 || b.pixelHeight < 1 || b.pixelWidth < 1) {
        return false;
    }
    double ra = static_cast<double>(a.pixelWidth) / a.pixelHeight;
    double rb = turn ? static_cast<double>(b.pixelHeight) / b.pixelWidth
                     : static_cast<double>(b.pixelWidth) / b.pixelHeight;
    if (ra <= 0) {
        return false;
    }
    return std::max(ra, rb) / std::min(ra, rb) <= kShapeTolerance;
}

} // namespace brevant
