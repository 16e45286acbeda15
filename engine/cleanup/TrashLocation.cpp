#include "TrashLocation.hpp"

#include "engine/platform/FolderListing.hpp"
#include "engine/platform/FreedesktopTrash.hpp"

#include <fmt/format.h>

namespace brevant {

std::string TrashLocation::home() {
    return platform::FreedesktopTrash::home().files();
}

std::vector<std::string> TrashLocation::candidates(const std::string& path) {
    std::vector<std::string> folders;
    for (const auto& directory : platform::FreedesktopTrash::candidates(path)) {
        folders.push_back(directory.files());
    }
    return folders;
}

std::optional<std::string> TrashLocation::find(const std::string& folder,
                                               const FileIdentity& identity) {
    auto names = platform::folderEntries(folder);
    if (!names) {
        return std::nullopt;
    }
    for (const auto& name : *names) {
        std::string path = fmt::format("{}/{}", folder, name);
        auto snapshot = FileSnapshot::read(path);
        if (snapshot && snapshot->isRegularFile && !snapshot->isSymbolicLink &&
            snapshot->identity == identity) {
            return path;
        }
    }
    return std::nullopt;
}

} // namespace brevant
