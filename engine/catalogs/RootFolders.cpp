#include "RootFolders.hpp"

#include "engine/platform/FileStatus.hpp"

namespace brevant {

void RootFolders::meet(const std::string& folder) {
    if (!met_.insert(folder).second) {
        return;
    }
    std::string resolved = platform::realPath(folder).value_or(folder);
    if (resolved_.insert(resolved).second) {
        folders_.push_back(std::move(resolved));
    }
}

} // namespace brevant
