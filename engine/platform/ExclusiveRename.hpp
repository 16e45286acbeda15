#pragma once

#include <string>

namespace brevant::platform {

// Gives `from` the name `to` only when nothing has that name yet, in one
// step (renameat2 with RENAME_NOREPLACE), so nothing is ever overwritten.
// Answers 0, or the errno value of the failure: EEXIST when `to` is taken,
// EXDEV when the two are on different volumes.
[[nodiscard]] int renameExclusive(const std::string& from, const std::string& to);

} // namespace brevant::platform
