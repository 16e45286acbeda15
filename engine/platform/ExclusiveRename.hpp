#pragma once

#include <expected>
#include <string>

namespace brevant::platform {

// Renames `from` to `to` in one atomic step that never replaces anything
// (renameat2 with RENAME_NOREPLACE). The error is the system's errno: EEXIST
// means something is at `to` ("occupied") and nothing moved; EXDEV means the
// two lie on different volumes, and nothing is ever copied instead.
[[nodiscard]] std::expected<void, int> renameNoReplace(const std::string& from,
                                                       const std::string& to);

// Forces a folder's entries (names made, renamed or removed in it) to the
// storage device; errors are ignored, as there is nothing left to undo.
void syncFolder(const std::string& folder);

} // namespace brevant::platform
