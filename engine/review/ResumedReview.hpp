#pragma once

#include "engine/review/SavedReview.hpp"
#include "engine/support/Date.hpp"

#include <set>
#include <string>

namespace brevant {

class ReviewSession;

// What a scan took back from the saved review of the same folders and mode.
// A mark or a reviewed group comes back only while its files are the very
// ones it was made on (same device, file number, size and modification
// time): a decision about a file that has changed since was never made.
struct ResumedReview {
    // When the review was last saved.
    Date saved;
    // Marks taken back.
    int restored = 0;
    // Marks left out because their file changed or is gone.
    int changed = 0;
    // Marks on unchanged files that are no longer in these results or may
    // not be marked now (locked, protected, the last copy of a group).
    int refused = 0;
    // Ids of the session's groups that were reviewed before.
    std::set<std::string> reviewed;

    // Marks the saved copies again in the session, through its refusals.
    [[nodiscard]] static ResumedReview restore(const SavedReview& saved, ReviewSession& session);

    // The sentence for the user; empty when the saved review held nothing.
    [[nodiscard]] std::string message() const;

    friend bool operator==(const ResumedReview&, const ResumedReview&) = default;
};

} // namespace brevant
