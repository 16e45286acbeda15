#include "UserFolders.hpp"

#include "engine/platform/ProcessInfo.hpp"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace brevant::platform {

namespace {

constexpr std::string_view kKey = "XDG_DOWNLOAD_DIR=";

std::string configHome(const std::string& home) {
    const char* config = std::getenv("XDG_CONFIG_HOME"); // NOLINT(concurrency-mt-unsafe)
    if (config != nullptr && config[0] == '/') {
        return config;
    }
    return home + "/.config";
}

// A value of the file: in double quotes, "$HOME/..." or an absolute path.
std::string expanded(std::string_view value, const std::string& home) {
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        value = value.substr(1, value.size() - 2);
    }
    if (value.starts_with("$HOME")) {
        return home + std::string(value.substr(5));
    }
    return std::string(value);
}

} // namespace

std::string downloadFolder() {
    std::string home = homeFolder();
    std::ifstream file(configHome(home) + "/user-dirs.dirs");
    std::stringstream text;
    text << file.rdbuf();
    return downloadFolder(text.str(), home);
}

std::string downloadFolder(std::string_view userDirs, const std::string& home) {
    std::istringstream lines{std::string(userDirs)};
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(kKey)) {
            continue;
        }
        std::string folder = expanded(std::string_view(line).substr(kKey.size()), home);
        // "$HOME/" alone means the desktop turned the folder off.
        if (folder.starts_with('/') && folder != home && folder != home + "/") {
            return folder;
        }
    }
    return home + "/Downloads";
}

} // namespace brevant::platform
