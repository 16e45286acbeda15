#pragma once

#include "engine/catalogs/CatalogSource.hpp"
#include "engine/cleanup/CleanupReport.hpp"
#include "engine/pipeline/PipelineProgress.hpp"
#include "engine/pipeline/ScanOutcome.hpp"
#include "engine/pipeline/ScanRequest.hpp"
#include "engine/review/SavedReviewBuilder.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/scan/ScanResult.hpp"
#include "engine/similarity/SimilarityIndex.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"
#include "engine/support/Date.hpp"

#include <expected>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace brevant {

class FeatureCache;

// The one road from a source to a review: the source is scanned for
// identical copies (folders through the exact matcher, a catalog through
// CatalogSource); when the mode asks for similar versions or series every
// picture is measured (through the feature cache) into a similarity index;
// in the Live Photos mode the media scan pairs the pictures with their
// movies instead, and its liveMovie groups are the scan's groups;
// the groups are formed by the one rule of CleanupGroups; faces are read
// for the pictures the keeper may compare; and a review session is made
// over the groups. The command line and the window are adapters over it.
class ScanPipeline {
public:
    // The engine operations the road calls, one per step. Tests wrap them,
    // for example to count how often pictures are measured or to hold a step.
    struct Steps {
        using Scan = std::function<ScanResult(const std::vector<std::string>& folders,
                                              bool keepPictures, const CancellationFlag& cancel,
                                              const ExactMatcher::Progress& progress)>;
        using ScanCatalog = std::function<std::expected<CatalogSource::Scanned, std::string>(
            const std::string& catalog, bool keepPictures, const CancellationFlag& cancel,
            const ExactMatcher::Progress& progress)>;
        using Measure = std::function<std::optional<SimilarityIndex>(
            std::vector<PhotoAsset> pictures, FeatureCache* cache, const CancellationFlag& cancel,
            const SimilarityMatcher::Progress& progress)>;
        using CheckFaces = std::function<std::optional<SimilarityIndex>(
            const std::vector<DuplicateGroup>& groups, const SimilarityIndex& index,
            FeatureCache* cache, const CancellationFlag& cancel,
            const SimilarityMatcher::Progress& progress)>;
        using PairLive = std::function<std::vector<DuplicateGroup>(
            const std::vector<PhotoAsset>& pictures, const CancellationFlag& cancel)>;

        Scan scan;
        ScanCatalog scanCatalog;
        Measure measure;
        CheckFaces checkFaces;
        PairLive pairLive;

        // ExactMatcher, CatalogSource, SimilarityMatcher and MediaScan; no feature
        // prints, which Linux cannot make yet.
        [[nodiscard]] static Steps standard();
    };

    // Called on the thread that runs the pipeline; it must not block.
    using Progress = std::function<void(const PipelineProgress&)>;

    explicit ScanPipeline(Steps steps = Steps::standard());

    // The whole road, on the calling thread. Stopping through `cancel` gives
    // a cancelled outcome; a catalog that cannot be read gives the sentence
    // why, and nothing else is done.
    [[nodiscard]] std::expected<ScanOutcome, std::string>
    run(const ScanRequest& request, const CancellationFlag& cancel, const Progress& progress) const;

    // The older outcome's request again, judged by the rules its session
    // holds now, with its marks carried over where they are still allowed.
    // The older session must not change while this runs.
    [[nodiscard]] std::expected<ScanOutcome, std::string> rescan(const ScanOutcome& older,
                                                                 const CancellationFlag& cancel,
                                                                 const Progress& progress) const;

    // The similar groups at another preset from the outcome's index as it
    // is, with a fresh session judged by `rules`: nothing is scanned,
    // measured or read again. Faces were read for the groups of every preset,
    // so the groups and suggestions are those of a fresh scan at that preset.
    // Carry the marks over (ScanOutcome::carryMarks) once they are final. In
    // another mode the groups do not depend on a preset: the outcome comes
    // back as it is.
    [[nodiscard]] static ScanOutcome regroup(const ScanOutcome& outcome, SimilarityPreset preset,
                                             const std::optional<ReviewRules>& rules);
    // The same, judged by the rules the outcome's session holds now.
    [[nodiscard]] static ScanOutcome regroup(const ScanOutcome& outcome, SimilarityPreset preset);

    // The outcome as the files lie after a cleanup: the copies its report
    // has in the Trash leave their groups, and groups left with one copy go.
    // The session is fresh, judged by the rules the older one holds now, and
    // carries its marks over where they are still allowed. Nothing is
    // scanned or measured again.
    [[nodiscard]] static ScanOutcome afterCleanup(const ScanOutcome& outcome,
                                                  const CleanupReport& report);
    // The same after a Put Back: the copies now back at their own paths
    // return to their groups. A copy put back under another name stays out
    // until the next scan, which finds it under that name.
    [[nodiscard]] static ScanOutcome afterPutBack(const ScanOutcome& outcome,
                                                  const std::vector<std::string>& returned);

    // Saves the outcome's marks and the groups among its own that are
    // reviewed as the review of its folders and mode, in the request's saved
    // reviews file, replacing the one saved before. Nothing is saved (false)
    // for a catalog, without a session or file, or when it cannot be written.
    [[nodiscard]] static bool saveReview(const ScanOutcome& outcome,
                                         const std::set<std::string>& reviewedIds,
                                         Date now = Date::now());
    // What saveReview would save, for a caller that writes it elsewhere (the
    // window, off its own thread); nothing where it would save nothing.
    [[nodiscard]] static std::optional<SavedReview>
    reviewToSave(const ScanOutcome& outcome, const std::set<std::string>& reviewedIds, Date now);
    // The same, to be taken a slice at a time.
    [[nodiscard]] static std::optional<SavedReviewBuilder>
    reviewBuilder(const ScanOutcome& outcome, std::set<std::string> reviewedIds, Date now);

private:
    // Measures the pictures and reads the faces the keeper needs; nothing
    // when stopped.
    [[nodiscard]] std::optional<SimilarityIndex>
    measured(std::vector<PhotoAsset> pictures, const ScanRequest& request, ScanProgress last,
             const CancellationFlag& cancel, const Progress& progress) const;

    Steps steps_;
};

} // namespace brevant
