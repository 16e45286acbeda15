#pragma once

#include <string>

namespace brevant::platform {

// The user's real home folder from the password database.
[[nodiscard]] std::string homeFolder();

[[nodiscard]] std::string currentDirectory();

} // namespace brevant::platform
