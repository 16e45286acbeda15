#include "ScanPipeline.hpp"

#include "engine/pipeline/DeclaredDifferences.hpp"
#include "engine/review/CleanupGroups.hpp"
#include "engine/review/KeeperMeasures.hpp"
#include "engine/review/ReviewStore.hpp"
#include "engine/scan/MediaScan.hpp"
#include "engine/similarity/FeatureCache.hpp"

#include <limits>
#include <set>
#include <utility>

namespace brevant {

namespace {

using Stage = ScanProgress::Stage;

int distinctMembers(const std::vector<DuplicateGroup>& groups) {
    std::set<std::string> paths;
    for (const auto& group : groups) {
        for (const auto& member : group.members) {
            paths.insert(member.path);
        }
    }
    return static_cast<int>(paths.size());
}

// The groups of the outcome's mode and, when a review was asked for, the
// session over them.
void formGroups(ScanOutcome& outcome) {
    const SimilarityIndex* index = outcome.index.get();
    outcome.groups = CleanupGroups::without(
        CleanupGroups::reviewed(outcome.request.mode, outcome.result->groups, index), outcome.away);
    outcome.summary = GroupSummary::of(outcome.groups);
    if (!outcome.request.review) {
        return;
    }
    const ReviewRules& rules = *outcome.request.review;
    outcome.session = std::make_shared<ReviewSession>(outcome.groups, rules.locks,
                                                      rules.protectedRoots, rules.inboxFolders);
    outcome.session->setPriorities(rules.priorities);
    if (index != nullptr) {
        outcome.session->setSimilarity(KeeperMeasures::from(*index));
    }
}

// Takes back the review saved for the same folders and mode.
void resume(ScanOutcome& outcome) {
    const ScanRequest& request = outcome.request;
    if (!outcome.session || !request.savedReviews ||
        request.source.kind != ScanSource::Kind::folders) {
        return;
    }
    ReviewStore store(request.savedReviews);
    auto saved = store.find(outcome.result->roots, request.mode.kind);
    if (saved) {
        outcome.resumed = ResumedReview::restore(*saved, *outcome.session);
    }
}

} // namespace

ScanPipeline::Steps ScanPipeline::Steps::standard() {
    Steps steps;
    steps.scan = [](const std::vector<std::string>& folders, bool keepPictures,
                    const CancellationFlag& cancel, const ExactMatcher::Progress& progress) {
        return ExactMatcher::scan(folders, keepPictures, std::nullopt, cancel, progress);
    };
    steps.scanCatalog = &CatalogSource::scan;
    steps.measure = [](std::vector<PhotoAsset> pictures, FeatureCache* cache,
                       const CancellationFlag& cancel,
                       const SimilarityMatcher::Progress& progress) {
        return SimilarityMatcher::index(std::move(pictures), cache, false, cancel, progress);
    };
    steps.checkFaces = &SimilarityMatcher::checkFaces;
    steps.pairLive = [](const std::vector<PhotoAsset>& pictures, const CancellationFlag& cancel) {
        return MediaScan::liveMovies(pictures, cancel);
    };
    return steps;
}

ScanPipeline::ScanPipeline(Steps steps)
    : steps_(std::move(steps)) {}

std::expected<ScanOutcome, std::string> ScanPipeline::run(const ScanRequest& request,
                                                          const CancellationFlag& cancel,
                                                          const Progress& progress) const {
    ScanOutcome outcome{.request = request};
    bool measuring = request.mode.measures();
    bool pairing = request.mode.kind == ScanMode::Kind::livePhotos;
    ScanProgress last;
    auto scanned = [&](const ScanProgress& now) {
        last = now;
        // The matcher's end is not the end of a scan that goes on.
        if (progress && (!(measuring || pairing) || now.stage != Stage::finishing)) {
            progress({.scan = now});
        }
    };
    ScanResult result;
    if (request.source.kind == ScanSource::Kind::folders) {
        result = steps_.scan(request.source.folders, measuring || pairing, cancel, scanned);
    } else {
        auto catalog =
            steps_.scanCatalog(request.source.catalog, measuring || pairing, cancel, scanned);
        if (!catalog) {
            return std::unexpected(std::move(catalog.error()));
        }
        outcome.catalog = catalog->facts;
        result = std::move(catalog->result);
    }
    result.cancelled = result.cancelled || cancel.isCancelled();
    if (pairing && !result.cancelled) {
        // Only the movie halves are looked for: the identical copies proven
        // on the way are not this mode's groups.
        result.groups = steps_.pairLive(std::exchange(result.pictures, {}), cancel);
        result.cancelled = cancel.isCancelled();
        last.stage = Stage::finishing;
        if (progress) {
            progress({.scan = last});
        }
    }
    if (measuring && !result.cancelled) {
        auto index = measured(std::exchange(result.pictures, {}), request, last, cancel, progress);
        result.cancelled = !index.has_value();
        if (index) {
            outcome.index = std::make_shared<const SimilarityIndex>(std::move(*index));
            last.stage = Stage::finishing;
            if (progress) {
                progress({.scan = last});
            }
        }
    }
    outcome.result = std::make_shared<const ScanResult>(std::move(result));
    if (outcome.cancelled()) {
        outcome.groups = outcome.result->groups;
        outcome.summary = GroupSummary::of(outcome.groups);
        return outcome;
    }
    formGroups(outcome);
    resume(outcome);
    return outcome;
}

std::optional<SimilarityIndex> ScanPipeline::measured(std::vector<PhotoAsset> pictures,
                                                      const ScanRequest& request, ScanProgress last,
                                                      const CancellationFlag& cancel,
                                                      const Progress& progress) const {
    auto report = [&progress](const PipelineProgress& now) {
        if (progress) {
            progress(now);
        }
    };
    std::optional<FeatureCache> cache;
    if (request.featureCache) {
        cache.emplace(request.featureCache);
    }
    FeatureCache* cached = cache ? &*cache : nullptr;
    int total = static_cast<int>(pictures.size());
    last.stage = Stage::measuring;
    report({last, 0, total});
    auto index = steps_.measure(std::move(pictures), cached, cancel,
                                [&](int done) { report({last, done, total}); });
    if (!index || cancel.isCancelled()) {
        return std::nullopt;
    }
    // The matcher reports from one thread only, so the last pictures may
    // finish unreported.
    report({last, total, total});
    if (request.notDuplicates) {
        NotDuplicateStore decisions(request.notDuplicates);
        DeclaredDifferences::apply(*index, decisions, cancel);
    }
    if (!request.review) {
        return index;
    }
    std::vector<DuplicateGroup> faced = CleanupGroups::faceChecked(request.mode, *index);
    if (faced.empty()) {
        return index;
    }
    total = distinctMembers(faced);
    last.stage = Stage::checkingFaces;
    report({last, 0, total});
    auto withFaces = steps_.checkFaces(faced, *index, cached, cancel,
                                       [&](int done) { report({last, done, total}); });
    if (withFaces) {
        report({last, total, total});
    }
    return withFaces;
}

std::expected<ScanOutcome, std::string> ScanPipeline::rescan(const ScanOutcome& older,
                                                             const CancellationFlag& cancel,
                                                             const Progress& progress) const {
    ScanRequest request = older.request;
    if (older.session) {
        request.review = ReviewRules::of(*older.session);
    }
    auto outcome = run(request, cancel, progress);
    if (outcome) {
        outcome->carryMarks(older);
    }
    return outcome;
}

std::optional<SavedReviewBuilder> ScanPipeline::reviewBuilder(const ScanOutcome& outcome,
                                                              std::set<std::string> reviewedIds,
                                                              Date now) {
    const ScanRequest& request = outcome.request;
    if (!outcome.session || !request.savedReviews ||
        request.source.kind != ScanSource::Kind::folders || outcome.cancelled()) {
        return std::nullopt;
    }
    return SavedReviewBuilder(outcome.session, outcome.result->roots, request.mode,
                              std::move(reviewedIds), now);
}

std::optional<SavedReview> ScanPipeline::reviewToSave(const ScanOutcome& outcome,
                                                      const std::set<std::string>& reviewedIds,
                                                      Date now) {
    auto builder = reviewBuilder(outcome, reviewedIds, now);
    if (!builder) {
        return std::nullopt;
    }
    builder->step(std::numeric_limits<std::size_t>::max());
    return builder->take();
}

bool ScanPipeline::saveReview(const ScanOutcome& outcome, const std::set<std::string>& reviewedIds,
                              Date now) {
    auto review = reviewToSave(outcome, reviewedIds, now);
    if (!review) {
        return false;
    }
    ReviewStore store(outcome.request.savedReviews);
    return store.save(std::move(*review));
}

ScanOutcome ScanPipeline::regroup(const ScanOutcome& outcome, SimilarityPreset preset,
                                  const std::optional<ReviewRules>& rules) {
    if (outcome.request.mode.kind != ScanMode::Kind::similar || !outcome.index) {
        return outcome;
    }
    ScanOutcome regrouped{.request = outcome.request,
                          .result = outcome.result,
                          .index = outcome.index,
                          .away = outcome.away,
                          .catalog = outcome.catalog};
    regrouped.request.mode.preset = preset;
    regrouped.request.review = rules;
    formGroups(regrouped);
    return regrouped;
}

ScanOutcome ScanPipeline::regroup(const ScanOutcome& outcome, SimilarityPreset preset) {
    std::optional<ReviewRules> rules = outcome.request.review;
    if (outcome.session) {
        rules = ReviewRules::of(*outcome.session);
    }
    return regroup(outcome, preset, rules);
}

namespace {

// The outcome again with other copies away, under the rules its session
// holds now and with its marks carried over.
ScanOutcome withAway(const ScanOutcome& outcome, std::set<std::string> away) {
    ScanOutcome changed{.request = outcome.request,
                        .result = outcome.result,
                        .index = outcome.index,
                        .away = std::move(away),
                        .catalog = outcome.catalog};
    if (outcome.session) {
        changed.request.review = ReviewRules::of(*outcome.session);
    }
    formGroups(changed);
    changed.carryMarks(outcome);
    return changed;
}

} // namespace

ScanOutcome ScanPipeline::afterCleanup(const ScanOutcome& outcome, const CleanupReport& report) {
    std::set<std::string> away = outcome.away;
    for (const auto& item : report.items) {
        if (item.outcome.kind == ItemOutcome::Kind::movedToTrash) {
            away.insert(item.removal.path);
        }
    }
    return withAway(outcome, std::move(away));
}

ScanOutcome ScanPipeline::afterPutBack(const ScanOutcome& outcome,
                                       const std::vector<std::string>& returned) {
    std::set<std::string> away = outcome.away;
    for (const auto& path : returned) {
        away.erase(path);
    }
    return withAway(outcome, std::move(away));
}

} // namespace brevant
