// Measuring pictures and reading faces for the similarity matcher.
#include "engine/similarity/SimilarityMatcher.hpp"

#include "engine/scan/ProgressCounter.hpp"
#include "engine/similarity/FaceCheck.hpp"
#include "engine/similarity/FeatureCache.hpp"
#include "engine/similarity/FeatureExtractor.hpp"
#include "engine/support/ParallelMap.hpp"

#include <set>
#include <thread>

namespace brevant {

namespace {

// Counts finished items and reports the count, but only on the thread that
// started the work, so a progress closure never runs on two threads at once.
class ProgressReporter {
public:
    explicit ProgressReporter(const SimilarityMatcher::Progress& progress)
        : progress_(progress)
        , owner_(std::this_thread::get_id()) {}

    void oneDone() {
        int count = counter_.increment();
        if (progress_ && std::this_thread::get_id() == owner_) {
            progress_(count);
        }
    }

private:
    const SimilarityMatcher::Progress& progress_;
    std::thread::id owner_;
    ProgressCounter counter_;
};

std::optional<ImageFeatures> measure(const PhotoAsset& picture, FeatureCache* cache,
                                     bool withFeaturePrint) {
    if (cache != nullptr) {
        auto cached = cache->lookup(picture);
        // A record without a print is measured again when prints are asked for.
        if (cached && (!withFeaturePrint || cached->featurePrint)) {
            return cached;
        }
    }
    auto measured = FeatureExtractor::features(picture.path, withFeaturePrint);
    if (measured && cache != nullptr) {
        cache->store(picture, *measured);
    }
    return measured;
}

} // namespace

std::optional<SimilarityIndex> SimilarityMatcher::index(std::vector<PhotoAsset> pictures,
                                                        FeatureCache* cache, bool withFeaturePrint,
                                                        const CancellationFlag& cancel,
                                                        const Progress& progress) {
    ProgressReporter reporter(progress);
    auto slots = parallelMap(pictures, cancel, [&](const PhotoAsset& picture) {
        auto measured = measure(picture, cache, withFeaturePrint);
        reporter.oneDone();
        return measured;
    });
    if (cache != nullptr) {
        cache->save();
    }
    if (cancel.isCancelled()) {
        return std::nullopt;
    }
    std::vector<std::optional<ImageFeatures>> features;
    std::vector<std::string> unmeasured;
    features.reserve(slots.size());
    for (std::size_t i = 0; i < slots.size(); ++i) {
        auto& slot = slots[i];
        if (!slot || !*slot) {
            unmeasured.push_back(pictures[i].path);
            features.emplace_back();
            continue;
        }
        features.push_back(std::move(*slot));
    }
    return index(std::move(pictures), std::move(features), std::move(unmeasured), cancel);
}

std::optional<SimilarityIndex>
SimilarityMatcher::index(std::vector<PhotoAsset> pictures,
                         std::vector<std::optional<ImageFeatures>> features,
                         std::vector<std::string> unmeasured, const CancellationFlag& cancel) {
    auto candidates = candidatePairs(pictures, features, cancel);
    if (!candidates) {
        return std::nullopt;
    }
    // Only the pairs read the detail hashes, a third of the pictures' memory;
    // grouping, hints and keeper choice go on without them.
    for (auto& measured : features) {
        if (measured) {
            std::vector<DetailHash>().swap(measured->detailHashes);
        }
    }
    return SimilarityIndex(std::move(pictures), std::move(features), std::move(candidates->pairs),
                           candidates->proposed, std::move(unmeasured));
}

std::optional<SimilarityIndex>
SimilarityMatcher::checkFaces(const std::vector<DuplicateGroup>& groups,
                              const SimilarityIndex& index, FeatureCache* cache,
                              const CancellationFlag& cancel, const Progress& progress) {
    std::vector<const PhotoAsset*> members;
    std::set<std::string> seen;
    for (const auto& group : groups) {
        for (const auto& member : group.members) {
            if (seen.insert(member.path).second) {
                members.push_back(&member);
            }
        }
    }
    ProgressReporter reporter(progress);
    auto readings = parallelMap(members, cancel, [&](const PhotoAsset* member) {
        std::optional<FaceReading> reading;
        if (cache != nullptr) {
            reading = cache->faces(*member);
        }
        if (!reading) {
            reading = FaceCheck::reading(member->path);
            if (reading && cache != nullptr) {
                cache->storeFaces(*member, *reading);
            }
        }
        reporter.oneDone();
        return reading;
    });
    if (cache != nullptr) {
        cache->save();
    }
    if (cancel.isCancelled()) {
        return std::nullopt;
    }
    std::unordered_map<std::string, FaceReading> byPath;
    for (std::size_t i = 0; i < members.size(); ++i) {
        const auto& slot = readings[i];
        if (slot && *slot) {
            byPath.emplace(members[i]->path, **slot);
        }
    }
    return index.withFaces(byPath);
}

} // namespace brevant
