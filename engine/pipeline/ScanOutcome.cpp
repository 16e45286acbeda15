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
    }
}

} // namespace brevant
