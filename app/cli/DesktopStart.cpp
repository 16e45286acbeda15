#include "DesktopStart.hpp"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <ranges>
#include <unistd.h>

namespace brevant::cli {

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool isExecutableFile(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

std::string programIn(std::string_view folder) {
    return std::string(folder) + "/" + std::string(DesktopStart::kProgram);
}

} // namespace

DesktopStart::Surroundings DesktopStart::current() {
    Surroundings surroundings;
    surroundings.display = variable("DISPLAY");
    surroundings.waylandDisplay = variable("WAYLAND_DISPLAY");
    surroundings.searchPath = variable("PATH");
    std::error_code error;
    auto own = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        surroundings.ownFolder = own.parent_path().string();
    }
    return surroundings;
}

std::optional<std::string> DesktopStart::program(const Surroundings& surroundings) {
    if (surroundings.display.empty() && surroundings.waylandDisplay.empty()) {
        return std::nullopt;
    }
    if (!surroundings.ownFolder.empty()) {
        if (std::string beside = programIn(surroundings.ownFolder); isExecutableFile(beside)) {
            return beside;
        }
    }
    for (auto entry : std::views::split(std::string_view(surroundings.searchPath), ':')) {
        std::string_view folder(entry.begin(), entry.end());
        if (!folder.starts_with('/')) {
            continue;
        }
        if (std::string found = programIn(folder); isExecutableFile(found)) {
            return found;
        }
    }
    return std::nullopt;
}

std::string DesktopStart::start(const std::string& program) {
    std::string name = program;
    char* arguments[] = {name.data(), nullptr};
    ::execv(program.c_str(), arguments);
    return std::strerror(errno);
}

} // namespace brevant::cli
