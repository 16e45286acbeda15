#include "FolderListing.hpp"

#include <algorithm>
#include <dirent.h>
#include <string_view>

namespace brevant::platform {

std::optional<std::vector<std::string>> folderEntries(const std::string& folder) {
    DIR* stream = ::opendir(folder.c_str());
    if (stream == nullptr) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(stream)) {
        std::string_view name(static_cast<const char*>(entry->d_name));
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
    ::closedir(stream);
    std::ranges::sort(names);
    return names;
}

} // namespace brevant::platform
