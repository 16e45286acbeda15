#pragma once

#include "engine/review/KeeperPolicy.hpp"
#include "engine/review/LockStore.hpp"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace brevant {

class ReviewSession;

// How the copies of a scan's groups are judged, and which of them may never
// be marked: what a review session is made with.
struct ReviewRules {
    // Shared by every session; without one, locks live in memory only.
    std::shared_ptr<LockStore> locks;
    std::set<std::string> protectedRoots;
    std::vector<std::string> inboxFolders;
    std::vector<KeeperPolicy::Priority> priorities = KeeperPolicy::standardPriorities();

    // The rules the session judges by now.
    [[nodiscard]] static ReviewRules of(const ReviewSession& session);
};

} // namespace brevant
