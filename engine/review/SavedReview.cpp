#include "SavedReview.hpp"

#include <algorithm>
#include <utility>

namespace brevant {

bool SavedReview::sameKey(const std::vector<std::string>& otherFolders, ScanMode::Kind kind) const {
    return mode.kind == kind && folders == keyFolders(otherFolders);
}

std::vector<std::string> SavedReview::keyFolders(std::vector<std::string> folders) {
    std::ranges::sort(folders);
    auto [from, to] = std::ranges::unique(folders);
    folders.erase(from, to);
    return folders;
}

} // namespace brevant
