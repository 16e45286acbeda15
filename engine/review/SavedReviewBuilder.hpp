#pragma once

#include "engine/review/SavedReview.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace brevant {

class ReviewSession;

// Takes a SavedReview out of a session a slice at a time, so that the window
// can save a review of a million marks between its other events. The
// session must outlive the builder; marks changed between slices start the
// copying again, so the review taken is always one moment's.
class SavedReviewBuilder {
public:
    SavedReviewBuilder(std::shared_ptr<const ReviewSession> session,
                       std::vector<std::string> folders, ScanMode mode,
                       std::set<std::string> reviewedIds, Date saved);

    // Copies up to `count` more marks, or looks at up to `count` more groups
    // for reviewed ones; true once the review is whole.
    bool step(std::size_t count);

    [[nodiscard]] bool isDone() const { return done_; }

    // Marks changed since the copying began: the next step starts it again.
    [[nodiscard]] bool isOutdated() const;

    // The whole review, once `step` said so.
    [[nodiscard]] SavedReview take();

private:
    void restart();

    std::shared_ptr<const ReviewSession> session_;
    std::set<std::string> reviewedIds_;
    SavedReview review_;
    std::uint64_t revision_ = 0;
    std::set<std::string>::const_iterator nextMark_;
    std::size_t nextGroup_ = 0;
    bool done_ = false;
};

} // namespace brevant
