#pragma once

#include <optional>
#include <string>
#include <vector>

namespace brevant::platform {

// The names in one folder (no recursion, without "." and ".."), in byte
// order; nothing when the folder cannot be listed.
[[nodiscard]] std::optional<std::vector<std::string>> folderEntries(const std::string& folder);

} // namespace brevant::platform
