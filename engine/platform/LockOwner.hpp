#pragma once

#include <optional>
#include <string>

namespace brevant::platform {

// The process id a lock file names, as an application writes it there: the
// number as text, perhaps followed by a line break. Nothing when the file is
// absent, unreadable or holds anything else.
[[nodiscard]] std::optional<int> lockFileProcess(const std::string& path);

// Whether a process with this id still runs on this computer. A process of
// another user counts: it is there even though we may not signal it.
[[nodiscard]] bool isProcessAlive(int processID);

} // namespace brevant::platform
