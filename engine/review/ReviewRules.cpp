#include "ReviewRules.hpp"

#include "engine/review/ReviewSession.hpp"

namespace brevant {

ReviewRules ReviewRules::of(const ReviewSession& session) {
    return {.locks = session.locks(),
            .protectedRoots = session.protectedRoots(),
            .inboxFolders = session.inboxFolders(),
            .priorities = session.priorities()};
}

} // namespace brevant
