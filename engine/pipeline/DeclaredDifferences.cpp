#include "DeclaredDifferences.hpp"

#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/scan/ContentReader.hpp"

#include <algorithm>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace brevant {

namespace {

// Records every decision, or none: one refused forgets those recorded
// before it.
std::expected<void, std::string> declareAll(NotDuplicateStore& store,
                                            const DeclaredDifferences::Decisions& decisions) {
    std::vector<int> recorded;
    for (const auto& paths : decisions) {
        auto decision = store.declare(paths);
        if (!decision) {
            for (int id : recorded) {
                (void)store.forget(id);
            }
            return std::unexpected(std::move(decision.error()));
        }
        recorded.push_back(decision->id);
    }
    return {};
}

} // namespace

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

std::expected<std::shared_ptr<const SimilarityIndex>, std::string>
DeclaredDifferences::declare(const ScanOutcome& outcome, const Decisions& decisions,
                             const CancellationFlag& cancel) {
    if (!outcome.index) {
        return std::unexpected(std::string(kIdenticalNotDifferent));
    }
    // Each store reads the file once and writes it whole: two declarations
    // at once in this process would lose one.
    static std::mutex writing;
    std::lock_guard guard(writing);
    NotDuplicateStore store(outcome.request.notDuplicates);
    if (auto declared = declareAll(store, decisions); !declared) {
        return std::unexpected(std::move(declared.error()));
    }
    auto index = std::make_shared<SimilarityIndex>(*outcome.index);
    apply(*index, store, cancel);
    return index;
}

ScanOutcome DeclaredDifferences::regrouped(const ScanOutcome& outcome,
                                           std::shared_ptr<const SimilarityIndex> index) {
    ScanOutcome measured = outcome;
    measured.index = std::move(index);
    // With nothing put back, this forms the groups again over the new index
    // under the session's rules, carrying its marks.
    return ScanPipeline::afterPutBack(measured, {});
}

} // namespace brevant
