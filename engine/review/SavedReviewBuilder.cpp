#include "SavedReviewBuilder.hpp"

#include "engine/review/ReviewSession.hpp"

#include <utility>

namespace brevant {

SavedReviewBuilder::SavedReviewBuilder(std::shared_ptr<const ReviewSession> session,
                                       std::vector<std::string> folders, ScanMode mode,
                                       std::set<std::string> reviewedIds, Date saved)
    : session_(std::move(session))
    , reviewedIds_(std::move(reviewedIds))
    , review_{
          .folders = SavedReview::keyFolders(std::move(folders)), .mode = mode, .saved = saved} {
    restart();
}

void SavedReviewBuilder::restart() {
    review_.marks.clear();
    review_.reviewed.clear();
    review_.marks.reserve(session_->marks().size());
    revision_ = session_->marksRevision();
    nextMark_ = session_->marks().begin();
    nextGroup_ = 0;
    done_ = false;
}

bool SavedReviewBuilder::isOutdated() const {
    return session_->marksRevision() != revision_;
}

bool SavedReviewBuilder::step(std::size_t count) {
    if (isOutdated()) {
        restart();
    }
    const auto& marks = session_->marks();
    // From the marks themselves, in path order: copying every marked copy
    // out of the groups took seconds over a million pictures.
    for (; count > 0 && nextMark_ != marks.end(); ++nextMark_, --count) {
        if (const PhotoAsset* marked = session_->asset(*nextMark_)) {
            review_.marks.push_back({.path = *nextMark_, .snapshot = marked->snapshot});
        }
    }
    const auto& groups = session_->groups();
    // Every group looked at counts: passing over a million unreviewed ones
    // in one step held the window for a tenth of a second.
    for (; count > 0 && !reviewedIds_.empty() && nextGroup_ < groups.size(); --count) {
        const DuplicateGroup& group = groups[nextGroup_++];
        if (!reviewedIds_.contains(group.id)) {
            continue;
        }
        SavedReview::Group kept{.id = group.id};
        for (const auto& member : group.members) {
            kept.members.push_back({.path = member.path, .snapshot = member.snapshot});
        }
        review_.reviewed.push_back(std::move(kept));
    }
    done_ = nextMark_ == marks.end() && (reviewedIds_.empty() || nextGroup_ == groups.size());
    return done_;
}

SavedReview SavedReviewBuilder::take() {
    return std::move(review_);
}

} // namespace brevant
