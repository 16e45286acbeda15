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
std::vector<int> rankFolders(const std::vector<DuplicateGroup>& groups, int& count) {
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
    count = static_cast<int>(folders.size());
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

std::vector<int> rankNewest(const std::vector<DuplicateGroup>& groups) {
    std::vector<std::int64_t> dates;
    dates.reserve(groups.size());
    for (const auto& group : groups) {
        dates.push_back(newestDate(group));
    }
    std::vector<int> order(groups.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::stable_sort(order, [&](int x, int y) { return dates[x] > dates[y]; });
    std::vector<int> ranks(groups.size());
    for (std::size_t rank = 0; rank < order.size(); ++rank) {
        ranks[order[rank]] = static_cast<int>(rank);
    }
    return ranks;
}

} // namespace

GroupOrderKeys GroupOrderKeys::of(const std::vector<DuplicateGroup>& groups) {
    GroupOrderKeys keys;
    keys.folderRanks = rankFolders(groups, keys.folderCount);
    keys.newestRanks = rankNewest(groups);
    return keys;
}

void GroupOrderKeys::orderByFolder(std::vector<int>& indices) const {
    // A counting sort: ranks are few and dense, and it is stable.
    std::vector<int> start(static_cast<std::size_t>(folderCount) + 1, 0);
    for (int i : indices) {
        start[folderRanks[i] + 1] += 1;
    }
    std::partial_sum(start.begin(), start.end(), start.begin());
    std::vector<int> ordered(indices.size());
    for (int i : indices) {
        ordered[start[folderRanks[i]]++] = i;
    }
    indices = std::move(ordered);
}

void GroupOrderKeys::orderByNewest(std::vector<int>& indices) const {
    // Ranks are distinct: each index has its own slot.
    std::vector<int> byRank(newestRanks.size(), -1);
    for (int i : indices) {
        byRank[newestRanks[i]] = i;
    }
    indices.clear();
    for (int i : byRank) {
        if (i >= 0) {
            indices.push_back(i);
        }
    }
}

} // namespace brevant
