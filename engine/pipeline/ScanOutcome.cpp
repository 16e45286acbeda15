#include "ScanOutcome.hpp"

#include "engine/review/CleanupGroups.hpp"

namespace brevant {

std::vector<DuplicateGroup> ScanOutcome::found() const {
    if (!index) {
        return result->groups;
    }
    return CleanupGroups::found(request.mode, *index);
}

void ScanOutcome::carryMarks(const ScanOutcome& older) {
    if (older.session) {
        carryMarks(older, older.session->marksAt());
    }
}

void ScanOutcome::carryMarks(const ScanOutcome& older, const ReviewSession::MarksAt& marks) {
    // A session is never carried into itself: another mode's regroup hands
    // the same session back.
    if (session && older.session && session != older.session && marks.marks) {
        session->carryMarks(*older.session, *marks.marks);
        carried = Carried{.session = older.session, .revision = marks.revision};
    }
}

bool ScanOutcome::carriesMarksOf(const ScanOutcome& older) const {
    if (!carried || !older.session) {
        return false;
    }
    // The same owner, not merely the same address.
    const auto& from = carried->session;
    bool same = !from.owner_before(older.session) && !older.session.owner_before(from);
    return same && carried->revision == older.session->marksRevision();
}

} // namespace brevant
