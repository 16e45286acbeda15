#include "DeclaredDifferences.hpp"

#include "engine/scan/ContentReader.hpp"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace brevant {

void DeclaredDifferences::apply(SimilarityIndex& index, const NotDuplicateStore& store,
                                const CancellationFlag& cancel) {
    index.declaredDifferent.clear();
    auto pairs = store.differentPairs();
    if (pairs.empty()) {
        return;
    }
    auto sizes = store.sizes();
    std::map<std::string, std::vector<int>> byDigest;
    for (int picture : index.paired()) {
        const PhotoAsset& asset = index.pictures[static_cast<std::size_t>(picture)];
        if (!sizes.contains(asset.snapshot.size)) {
            continue;
        }
        auto digest = ContentReader::sha256(asset.path, asset.snapshot, std::nullopt, &cancel);
        if (digest) {
            byDigest[*digest].push_back(picture);
        }
    }
    for (const auto& [first, second] : pairs) {
        auto a = byDigest.find(first);
        auto b = byDigest.find(second);
        if (a == byDigest.end() || b == byDigest.end()) {
            continue;
        }
        for (int x : a->second) {
            for (int y : b->second) {
                index.declaredDifferent.emplace_back(std::min(x, y), std::max(x, y));
            }
        }
    }
    std::ranges::sort(index.declaredDifferent);
    auto [from, to] = std::ranges::unique(index.declaredDifferent);
    index.declaredDifferent.erase(from, to);
}

} // namespace brevant
