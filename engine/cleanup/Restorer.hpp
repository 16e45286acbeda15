#pragma once

#include "engine/cleanup/ChangeLock.hpp"
#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/PutBack.hpp"
#include "engine/cleanup/RestoreOutcome.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/support/Date.hpp"

#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// Put Back: moves pictures that a cleanup moved to the Trash back where they
// were, or to a free name beside them, and records that in the cleanup's
// journal. It never overwrites and never copies: each picture is renamed out
// of the Trash in one step that fails rather than replace anything.
//
// A Put Back is journalled like a move: a putBack entry before the picture
// moves and its result after, so that one cut short is settled by
// reconciliation. It holds the data folder's change lock (the journal lies in
// the folder's "Cleanups") and the journal's own lock, and reads the journal
// once, however many pictures it puts back.
struct Restorer {
    // One picture of the cleanup, by its planned path, and where it goes.
    using Request = PutBackRequest::Item;
    // What became of one picture asked for.
    using Result = PutBackRequest::Result;
    // The pictures, and how: see PutBackRequest.
    using Batch = PutBackRequest;
    // Called after each picture, with the number done and the total.
    using Progress = PutBackRequest::Progress;

    // Puts the pictures back in request order. Each one's file in the Trash
    // must be the one the cleanup moved (same device and inode; a different
    // file of that name is never put back) and its destination's folder
    // must exist. Results come for the pictures attempted: a cancellation
    // leaves the rest out. Refused with a sentence, before anything moves,
    // when another run holds the change lock or the journal, or the journal
    // cannot be read or written.
    [[nodiscard]] static std::expected<std::vector<Result>, std::string>
    restore(const Batch& batch, const CancellationFlag& cancel, const Progress& progress = {});

    // One picture, as restore above, answering its outcome (a refusal of
    // the whole Put Back comes back as failed with its sentence).
    [[nodiscard]] static RestoreOutcome restore(const PlannedRemoval& removal,
                                                const std::string& journalPath,
                                                const std::string& destination,
                                                Date now = Date::now());

    // The file operation alone, for a picture that went to the Trash as
    // `trashed`: checks, renames without replacing anything and drops the
    // Trash record. Nothing is written to a journal.
    [[nodiscard]] static RestoreOutcome attempt(const FileIdentity& trashed,
                                                const std::optional<std::string>& trashPath,
                                                const std::string& destination);

    // The journal's note for an outcome other than `restored`, with the date
    // as the user's locale writes it briefly (platform::shortDateTime).
    [[nodiscard]] static std::optional<std::string> noteFor(const RestoreOutcome& outcome,
                                                            Date when);

    // A free name beside `path` for putting a picture back under another
    // name: "IMG_1 (restored).jpg", then "IMG_1 (restored 2).jpg" up to 999;
    // when all are taken, the first 8 characters of a new UUID's text stand
    // for the number ("IMG_1 (restored 3F2A9C1B).jpg").
    [[nodiscard]] static std::string alternativePath(const std::string& path);

    // Shown beside the Put Back commands.
    [[nodiscard]] static std::string generalNote();
};

} // namespace brevant
