#pragma once

#include "tests/fixtures/TempTree.hpp"

#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/review/LockStore.hpp"
#include "engine/scan/ScanResult.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

// What the catalog markers' tests share: plans made from a catalog scan the
// way the window makes them, and a look at what was left on disk.
namespace brevant::testing {

// The plan of these marks over the scan's groups, and its approval.
inline std::pair<CleanupPlan, CleanupApproval> approvedPlan(const ScanResult& result,
                                                            const std::set<std::string>& marks) {
    LockStore locks(std::nullopt);
    auto plan = CleanupPlanner::plan(result.groups, marks, locks, {});
    EXPECT_TRUE(plan.has_value());
    CleanupPlan made = plan.value_or(CleanupPlan{});
    return {made, CleanupApproval{made.id, made.created}};
}

// The names in a folder, sorted; empty when it is not there.
inline std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

} // namespace brevant::testing
