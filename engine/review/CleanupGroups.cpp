#include "CleanupGroups.hpp"

#include "engine/similarity/SimilarityThresholds.hpp"

#include <algorithm>
#include <string>
#include <unordered_set>

namespace brevant {

std::vector<DuplicateGroup> CleanupGroups::found(const ScanMode& mode,
                                                 const SimilarityIndex& index) {
    switch (mode.kind) {
    case ScanMode::Kind::identical:
    case ScanMode::Kind::livePhotos:
        return {};
    case ScanMode::Kind::similar:
        return index.groups(mode.preset);
    case ScanMode::Kind::series:
        return index.series(kSeriesWindow, SimilarityThresholds::kSeriesRelated);
    }
    return {};
}

std::vector<DuplicateGroup> CleanupGroups::reviewed(const ScanMode& mode,
                                                    const std::vector<DuplicateGroup>& identical,
                                                    const SimilarityIndex* index) {
    if (!mode.measures() || index == nullptr) {
        return identical;
    }
    return withIdentical(found(mode, *index), identical);
}

std::vector<DuplicateGroup> CleanupGroups::faceChecked(const ScanMode& mode,
                                                       const SimilarityIndex& index) {
    if (mode.kind != ScanMode::Kind::similar) {
        return found(mode, index);
    }
    std::vector<DuplicateGroup> groups;
    for (SimilarityPreset preset : EnumCases<SimilarityPreset>::kAll) {
        std::ranges::move(index.groups(preset), std::back_inserter(groups));
    }
    return groups;
}

std::vector<DuplicateGroup>
CleanupGroups::withIdentical(std::vector<DuplicateGroup> grouped,
                             const std::vector<DuplicateGroup>& identical) {
    std::unordered_set<std::string> held;
    for (const auto& group : grouped) {
        for (const auto& member : group.members) {
            held.insert(member.path);
        }
    }
    for (const auto& group : identical) {
        bool apart = std::ranges::none_of(
            group.members, [&](const PhotoAsset& member) { return held.contains(member.path); });
        if (apart) {
            grouped.push_back(group);
        }
    }
    sortGroupsBySavings(grouped);
    return grouped;
}

std::vector<DuplicateGroup> CleanupGroups::without(std::vector<DuplicateGroup> groups,
                                                   const std::set<std::string>& away) {
    if (away.empty()) {
        return groups;
    }
    for (auto& group : groups) {
        std::erase_if(group.members,
                      [&](const PhotoAsset& member) { return away.contains(member.path); });
    }
    std::erase_if(groups, [](const DuplicateGroup& group) { return group.members.size() < 2; });
    return groups;
}

} // namespace brevant
