#include "GroupOrderKeys.hpp"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>

namespace brevant {

namespace {

constexpr std::string_view kLibraryFolder = "Photos Library";

// The first copy's folder as PhotoAsset::folder() says it, without copying
// it.
std::string_view folderOf(const DuplicateGroup& group) {
    if (group.members.empty()) {
        return {};
    }
    const PhotoAsset& first = group.members.front();
    if (first.library) {
        return kLibraryFolder;
    }
    std::string_view path = first.path;
    std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) {
        return {};
    }
    return slash == 0 ? path.substr(0, 1) : path.substr(0, slash);
}

// Groups share few folders: each folder is sorted once, not each group.
std::vector<int> rankFolders(const std::vector<DuplicateGroup>& groups) {
    std::unordered_map<std::string_view, int> ids;
    std::vector<std::string_view> folders;
    std::vector<int> folderOfGroup;
    folderOfGroup.reserve(groups.size());
    for (const auto& group : groups) {
        auto [found, added] = ids.try_emplace(folderOf(group), static_cast<int>(folders.size()));
        if (added) {
            folders.push_back(found->first);
        }
        folderOfGroup.push_back(found->second);
    }
    std::vector<int> byName(folders.size());
    std::iota(byName.begin(), byName.end(), 0);
    std::ranges::sort(byName, [&](int x, int y) { return folders[x] < folders[y]; });
    std::vector<int> rankOfFolder(folders.size());
    for (std::size_t rank = 0; rank < byName.size(); ++rank) {
        rankOfFolder[byName[rank]] = static_cast<int>(rank);
    }
    std::vector<int> ranks;
    ranks.reserve(groups.size());
    for (int folder : folderOfGroup) {
        ranks.push_back(rankOfFolder[folder]);
    }
    return ranks;
}

std::int64_t newestDate(const DuplicateGroup& group) {
    std::int64_t newest = 0;
    for (const auto& member : group.members) {
        newest = std::max(newest, member.snapshot.modifiedSeconds);
    }
    return newest;
}

} // namespace

GroupOrderKeys GroupOrderKeys::of(const std::vector<DuplicateGroup>& groups) {
    GroupOrderKeys keys{.folderRanks = rankFolders(groups)};
    keys.newestDates.reserve(groups.size());
    for (const auto& group : groups) {
        keys.newestDates.push_back(newestDate(group));
    }
    return keys;
}

} // namespace brevant
