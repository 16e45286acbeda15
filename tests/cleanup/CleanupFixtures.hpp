#pragma once

#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/ItemOutcome.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/Date.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace brevant::testing {

// 2026-11-14T21:49:44Z and whole seconds after it, so dates survive the
// journal's whole-second coding.
inline Date fixedDate(std::int64_t secondsLater = 0) {
    return Date::fromUnix(1794692984 + secondsLater, 0);
}

// The id every fixed plan carries, so that file names and lines can be
// compared as text.
inline Uuid fixedPlanID() {
    auto id = Uuid::parse("0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9");
    if (!id) {
        throw std::logic_error("bad fixed UUID");
    }
    return *id;
}

inline FileSnapshot snapshotOf(const std::string& path) {
    auto snapshot = FileSnapshot::read(path);
    if (!snapshot) {
        throw std::runtime_error("no file at " + path);
    }
    return *snapshot;
}

// A removal of an existing file, with one kept copy, as the planner makes it.
inline PlannedRemoval removalOf(const std::string& path, const std::string& keeper,
                                const std::string& root) {
    PlannedRemoval removal;
    removal.path = path;
    removal.root = root;
    removal.snapshot = snapshotOf(path);
    removal.sha256 = std::string(64, 'a');
    removal.keepers = {{keeper, snapshotOf(keeper)}};
    removal.matchKind = MatchKind::identical;
    return removal;
}

inline CleanupPlan planOf(std::vector<PlannedRemoval> removals, std::vector<std::string> roots) {
    CleanupPlan plan;
    plan.id = fixedPlanID();
    plan.created = fixedDate();
    plan.roots = std::move(roots);
    plan.removals = std::move(removals);
    return plan;
}

// The outcome of a file moved to `trashPath`, with the identity of the file
// now there, as the executor records it.
inline ItemOutcome movedTo(const std::string& trashPath) {
    auto found = FileSnapshot::read(trashPath);
    return ItemOutcome::movedToTrash(trashPath,
                                     found ? std::optional(found->identity) : std::nullopt);
}

} // namespace brevant::testing
