#pragma once

#include "engine/catalogs/CatalogSource.hpp"
#include "engine/pipeline/ScanRequest.hpp"
#include "engine/review/ResumedReview.hpp"
#include "engine/review/ReviewSession.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/GroupSummary.hpp"
#include "engine/scan/ScanResult.hpp"
#include "engine/similarity/SimilarityIndex.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace brevant {

// What one scan produced: its result, the similarity index when the mode
// measured, the groups its review holds and, when a review was asked for,
// the session over them. The result and the index never change once made,
// so a regroup shares them; the session is shared with whoever shows it.
struct ScanOutcome {
    // What was asked; a regroup records its preset here.
    ScanRequest request;
    // Never null. When an index was built, the pictures live in it and the
    // result's own list is empty.
    std::shared_ptr<const ScanResult> result = std::make_shared<const ScanResult>();
    std::shared_ptr<const SimilarityIndex> index;
    // As CleanupGroups::reviewed gives them, without the copies `away`.
    std::vector<DuplicateGroup> groups;
    // The groups counted, made with them off the interface thread.
    GroupSummary summary;
    // Copies a cleanup has moved to the Trash since the scan, by path: they
    // are left out of the groups until they are put back.
    std::set<std::string> away;
    std::shared_ptr<ReviewSession> session;
    // For a catalog source.
    std::optional<CatalogSource::Facts> catalog;
    // What was taken back from the saved review of the same folders and
    // mode, when there was one.
    std::optional<ResumedReview> resumed;

    // Stopped before the end: then there is neither index nor session, and
    // the groups are the identical ones proven until then.
    [[nodiscard]] bool cancelled() const { return result->cancelled; }

    // The groups of the kind the mode looks for and nothing else
    // (CleanupGroups::found), as the report lists them; the identical groups
    // in the identical mode.
    [[nodiscard]] std::vector<DuplicateGroup> found() const;

    // After a rescan or a regroup: marks again what the older session had
    // marked, where this session allows it.
    void carryMarks(const ScanOutcome& older);
    // The same from older's marks as they stood (ReviewSession::marksAt),
    // on a worker while the window may go on marking in older.
    void carryMarks(const ScanOutcome& older, const ReviewSession::MarksAt& marks);

    // Whether the marks were carried from older's session as it stands now:
    // carried on a worker while it could not change, they need not be
    // carried again on the interface thread.
    [[nodiscard]] bool carriesMarksOf(const ScanOutcome& older) const;

    // The session carried from last, and its marks' revision then. Held
    // weakly: the older result may be freed, and no later session can pass
    // for it.
    struct Carried {
        std::weak_ptr<const ReviewSession> session;
        std::uint64_t revision = 0;
    };

    std::optional<Carried> carried;
};

} // namespace brevant
