#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brevant::platform {

// The user's configuration folder: $XDG_CONFIG_HOME when it is absolute,
// else ~/.config.
[[nodiscard]] std::string configFolder();

// The text of a file in the configuration folder, read without following a
// final symbolic link; nothing when it is not there or cannot be read.
[[nodiscard]] std::optional<std::string> configFile(std::string_view name);

} // namespace brevant::platform
