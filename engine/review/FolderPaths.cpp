#include "FolderPaths.hpp"

#include <utility>

namespace brevant::folder_paths {

std::string normalized(std::string_view folder) {
    while (folder.size() > 1 && folder.ends_with('/')) {
        folder.remove_suffix(1);
    }
    return std::string(folder);
}

bool contains(std::string_view folder, std::string_view path) {
    if (folder.empty()) {
        return false;
    }
    if (folder == "/") {
        return true;
    }
    return path == folder ||
           (path.starts_with(folder) && path.size() > folder.size() && path[folder.size()] == '/');
}

std::optional<std::string> innermost(const std::set<std::string>& folders, std::string_view path) {
    std::optional<std::string> found;
    for (const auto& folder : folders) {
        std::string whole = normalized(folder);
        if (contains(whole, path) && (!found || whole.size() > found->size())) {
            found = std::move(whole);
        }
    }
    return found;
}

std::string lastComponent(std::string_view folder) {
    std::string whole = normalized(folder);
    if (whole == "/") {
        return whole;
    }
    auto slash = whole.rfind('/');
    return slash == std::string::npos ? whole : whole.substr(slash + 1);
}

} // namespace brevant::folder_paths
