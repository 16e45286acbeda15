#pragma once

#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/RestoreOutcome.hpp"
#include "engine/support/Date.hpp"

#include <optional>
#include <string>

namespace brevant {

// Put Back: moves one picture that a cleanup moved to the Trash back where
// it was, or to a free name beside it, and records that in the cleanup's
// journal. It never overwrites and never copies: the picture is renamed out
// of the Trash in one step that fails rather than replace anything.
struct Restorer {
    // The file operation alone. The file at `trashPath` must be the planned
    // one (same device and inode; a different file of that name is never put
    // back) and the destination's folder must exist; then it is renamed
    // without replacing anything and its .trashinfo record is removed.
    [[nodiscard]] static RestoreOutcome attempt(const PlannedRemoval& removal,
                                                const std::optional<std::string>& trashPath,
                                                const std::string& destination);

    // Finds where the journal says the item went, attempts the Put Back and
    // records it there: `restored` as the item's new outcome, the others as
    // a note dated `now` (see noteFor). A journal that cannot be read or
    // written does not change the outcome answered.
    [[nodiscard]] static RestoreOutcome restore(const PlannedRemoval& removal,
                                                const std::string& journalPath,
                                                const std::string& destination,
                                                Date now = Date::now());

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
