#pragma once

#include "app/cli/Command.hpp"
#include "engine/review/CleanupGroups.hpp"
#include "engine/review/KeeperPolicy.hpp"
#include "engine/review/LockStore.hpp"
#include "engine/review/ReviewSession.hpp"
#include "engine/scan/ScanResult.hpp"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace brevant::cli {

// What a cleanup from the command line looks at and how it judges copies.
struct CleanupRequest {
    std::vector<std::string> folders;
    CleanupGroups kinds;
    std::set<std::string> protectedRoots;
    std::vector<std::string> inboxFolders;
    std::vector<KeeperPolicy::Priority> priorities = KeeperPolicy::standardPriorities();
};

// A scan made ready for review: the folders scanned, the pictures measured
// when similar versions or series are asked for (through the feature cache,
// faces read for the grouped pictures), and a session over the groups.
struct CleanupScan {
    ScanResult result;
    // Nothing when the scan was stopped.
    std::unique_ptr<ReviewSession> session;

    // With progress on the environment's terminal; stops between items
    // when its cancellation flag is set.
    [[nodiscard]] static CleanupScan run(const CleanupRequest& request,
                                         std::shared_ptr<LockStore> locks,
                                         const std::optional<std::string>& featureCache,
                                         const Environment& environment);
};

} // namespace brevant::cli
