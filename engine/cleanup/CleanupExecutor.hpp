#pragma once

#include "engine/cleanup/ChangeLock.hpp"
#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/CleanupReport.hpp"
#include "engine/cleanup/ExecutionRefusal.hpp"
#include "engine/cleanup/Trasher.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace brevant {

// Carries out an approved plan for pictures in plain folders: checks every
// planned removal again just before it moves, moves what passes to the
// Trash and records every step in the plan's journal, an intent before each
// move and an outcome after it. It never deletes. The report it answers is
// read back from the journal it has just written.
//
// A run holds its data folder's change lock from start to end, so that no
// other run (of this or another process) moves pictures or changes locks
// beside it, and reads the lock store afresh: a store that cannot be read
// stops the run before anything moves, and a copy locked since the scan
// stays. Each moved file is checked once more after the move: a file that
// changed in that instant goes back at once.
class CleanupExecutor {
public:
    // Called after each item handled, with the count so far (1, 2, ...).
    // Items reached after a cancellation are recorded but not counted.
    using Progress = std::function<void(int handled)>;
    // The files moved to the Trash earlier in the same run.
    using Trashed = std::set<FileIdentity>;

    // The journals go to the data folder's "Cleanups". Without a trasher the
    // freedesktop.org Trash is used.
    explicit CleanupExecutor(platform::DataFolder data,
                             std::shared_ptr<const Trasher> trasher = nullptr);

    [[nodiscard]] std::string journalDirectory() const { return data_.cleanups(); }

    // How to wait while another run holds the change lock; without it the
    // plan is refused as busy at once.
    void setWaiting(ChangeLock::Waiting waiting) { waiting_ = std::move(waiting); }

    // Refused before anything is written when the approval is for another
    // plan, when a removal is a Photos library item, a Lightroom Classic or
    // a Capture One photo (in that order, each looked for in all removals),
    // when another run holds the change lock, when the lock store cannot be
    // read, when the plan's journal exists already (a plan runs once) or
    // when it cannot be created. Then, item by item in plan order: after a
    // cancellation every item left is recorded as cancelled; an item locked
    // since the scan, or that fails `check`, is skipped with its reason; any
    // other is moved, its intent (with where in the Trash it goes) written
    // and synced first (no intent on disk, no move, no outcome) and its
    // outcome after. The cancellation flag is read once per item, before it
    // is touched, so the item in progress finishes.
    [[nodiscard]] std::expected<CleanupReport, ExecutionRefusal>
    execute(const CleanupPlan& plan, const CleanupApproval& approval,
            const CancellationFlag& cancel, const Progress& progress = {}) const;

    // The re-check just before an item moves; nothing when it may move,
    // else why it is skipped. In order: inside the plan's roots and its own
    // root; no folder on the way replaced with a link (a folder that is gone
    // is not one: the item then reads as no longer where it was); still
    // there; not a link; not only in the cloud; a regular file; the file of
    // the scan, unchanged (link count aside); one name only; and a kept copy
    // still there. A kept copy passes when it is there, unchanged, not moved
    // (in `trashed`, or the item itself) and, for identical copies, not only
    // in the cloud and still byte for byte the same (read through
    // ContentReader, honouring `cancel`). A kept copy gone because this run
    // trashed it counts as moved rather than missing.
    [[nodiscard]] static std::optional<std::string> check(const PlannedRemoval& removal,
                                                          const CleanupPlan& plan,
                                                          const Trashed& trashed,
                                                          const CancellationFlag& cancel);

    // The outcome text of a move the system refused.
    [[nodiscard]] static std::string explain(const TrashError& error);

private:
    [[nodiscard]] std::optional<ExecutionRefusal> refusal(const CleanupPlan& plan,
                                                          const CleanupApproval& approval) const;

    platform::DataFolder data_;
    std::shared_ptr<const Trasher> trasher_;
    ChangeLock::Waiting waiting_;
};

} // namespace brevant
