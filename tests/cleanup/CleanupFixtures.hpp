#pragma once

#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/ItemOutcome.hpp"
#include "engine/platform/AppendOnlyFile.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/Date.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
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

// A snapshot of a file that need not exist, and how the records code it.
inline FileSnapshot paperSnapshot(std::uint64_t inode, std::int64_t size = 10) {
    return {{7, inode}, size, 1700000000, 5, 1, true, false, 0};
}

inline std::string paperSnapshotText(std::uint64_t inode, std::int64_t size = 10) {
    return R"({"identity":{"device":7,"inode":)" + std::to_string(inode) + R"(},"size":)" +
           std::to_string(size) +
           R"(,"modifiedSeconds":1700000000,"modifiedNanoseconds":5,"linkCount":1,)"
           R"("isRegularFile":true,"isSymbolicLink":false,"flags":0})";
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

// Passes every write and sync through to the system, noting each one, but
// for those it is told to fail: a full disk, an error, a short write.
class ScriptedWriteCalls : public platform::FileWriteCalls {
public:
    std::vector<std::string> log;
    std::optional<int> writeError;
    std::optional<int> syncError;
    // Writes whose bytes hold this text find the disk full.
    std::optional<std::string> failWritesHolding;
    // How many writes pass before the disk is full.
    std::optional<int> writesLeft;
    std::size_t shortBy = 0;
    // Whether a sync reaches the disk; a test that only looks at the bytes
    // need not wait for it.
    bool syncs = true;

    std::expected<std::size_t, int> write(int descriptor, std::string_view bytes) override {
        log.push_back("write " + std::string(bytes));
        if (writesLeft && (*writesLeft)-- <= 0) {
            return std::unexpected(ENOSPC);
        }
        if (failWritesHolding && bytes.find(*failWritesHolding) != std::string_view::npos) {
            return std::unexpected(ENOSPC);
        }
        if (writeError) {
            return std::unexpected(*writeError);
        }
        return platform::systemWriteCalls().write(descriptor,
                                                  bytes.substr(0, bytes.size() - shortBy));
    }

    std::expected<void, int> sync(int descriptor) override {
        log.emplace_back("sync");
        if (syncError) {
            return std::unexpected(*syncError);
        }
        if (!syncs) {
            return {};
        }
        return platform::systemWriteCalls().sync(descriptor);
    }
};

} // namespace brevant::testing
