#include "CleanupScan.hpp"

#include "app/cli/ProgressLine.hpp"
#include "engine/review/KeeperMeasures.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/similarity/FeatureCache.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"

namespace brevant::cli {

namespace {

using Stage = ScanProgress::Stage;

// Measures every picture, then reads faces for the grouped ones, which the
// keeper's face rules need; nothing when stopped.
std::optional<SimilarityIndex> measured(ScanResult& result, const CleanupRequest& request,
                                        FeatureCache& cache, const CancellationFlag& cancel,
                                        ProgressLine& line) {
    int total = static_cast<int>(result.pictures.size());
    auto index = SimilarityMatcher::index(
        std::move(result.pictures), &cache, false, cancel,
        [&line, total](int done) { line.show(Stage::measuring, done, total); });
    if (!index || cancel.isCancelled()) {
        return std::nullopt;
    }
    std::vector<DuplicateGroup> groups = request.kinds.of(result.groups, &*index);
    int members = 0;
    for (const auto& group : groups) {
        members += static_cast<int>(group.members.size());
    }
    return SimilarityMatcher::checkFaces(
        groups, *index, &cache, cancel,
        [&line, members](int done) { line.show(Stage::checkingFaces, done, members); });
}

} // namespace

CleanupScan CleanupScan::run(const CleanupRequest& request, std::shared_ptr<LockStore> locks,
                             const std::optional<std::string>& featureCache,
                             const Environment& environment) {
    const CancellationFlag& cancel = environment.cancellation();
    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    CleanupScan scan;
    bool measuring = request.kinds.needsIndex();
    scan.result = ExactMatcher::scan(request.folders, measuring, std::nullopt, cancel,
                                     [&line](const ScanProgress& now) { line.show(now); });
    if (scan.result.cancelled || cancel.isCancelled()) {
        return scan;
    }
    std::optional<SimilarityIndex> index;
    if (measuring) {
        FeatureCache cache(featureCache);
        index = measured(scan.result, request, cache, cancel, line);
        if (!index) {
            return scan;
        }
    }
    std::vector<DuplicateGroup> groups =
        request.kinds.of(scan.result.groups, index ? &*index : nullptr);
    scan.session = std::make_unique<ReviewSession>(std::move(groups), std::move(locks),
                                                   request.protectedRoots, request.inboxFolders);
    scan.session->setPriorities(request.priorities);
    if (index) {
        scan.session->setSimilarity(KeeperMeasures::from(*index));
    }
    return scan;
}

} // namespace brevant::cli
