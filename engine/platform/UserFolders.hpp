#pragma once

#include <string>
#include <string_view>

namespace brevant::platform {

// The user's Downloads folder as the desktop names it: XDG_DOWNLOAD_DIR in
// user-dirs.dirs ($XDG_CONFIG_HOME, else ~/.config), else ~/Downloads. The
// folder need not exist.
[[nodiscard]] std::string downloadFolder();

// The same from the file's text, for a home folder; nothing found gives
// home + "/Downloads".
[[nodiscard]] std::string downloadFolder(std::string_view userDirs, const std::string& home);

} // namespace brevant::platform
