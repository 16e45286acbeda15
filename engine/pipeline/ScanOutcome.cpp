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
    if (session && older.session) {
        session->carryMarks(*older.session);
        carried =
            Carried{.session = older.session.get(), .revision = older.session->marksRevision()};
    }
}

bool ScanOutcome::carriesMarksOf(const ScanOutcome& older) const {
    return carried && older.session && carried->session == older.session.get() &&
           carried->revision == older.session->marksRevision();
}

} // namespace brevant
