#pragma once

#include "engine/cleanup/ItemOutcome.hpp"
#include "engine/cleanup/Trasher.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <functional>
#include <optional>
#include <string>

namespace brevant {

// One file moved to the Trash under a journal, the same way whatever run
// moves it: its place in the Trash is reserved and written down in an intent
// before it moves (no intent on disk, no move), and the moved file is
// checked against what was expected once more after the move.
struct TrashMove {
    // What the move came to: its outcome (none when its intent could not be
    // written, so nothing moved), a note, and the file now in the Trash.
    struct Result {
        std::optional<ItemOutcome> outcome;
        std::optional<std::string> note;
        std::optional<FileIdentity> trashed;
    };

    // Writes the intent, with where in the Trash the file goes (nothing when
    // the Trash could not say); false when it could not be written.
    using WriteIntent = std::function<bool(const std::optional<std::string>& trashPath)>;

    // Moves `path`, which must still be the file `expected` describes. A
    // file that changed in the instant between the caller's check and the
    // move (an editor saving by rename) is put back at once; if its place was
    // taken meanwhile it stays in the Trash, recorded as the file it is, so
    // that Put Back finds it. A place taken meanwhile is reserved and written
    // down anew.
    [[nodiscard]] static Result run(const Trasher& trasher, const std::string& path,
                                    const FileSnapshot& expected, const WriteIntent& writeIntent);

    // The file of the snapshot, unchanged; link count and flags aside.
    [[nodiscard]] static bool sameFile(const FileSnapshot& now, const FileSnapshot& planned);
};

} // namespace brevant
