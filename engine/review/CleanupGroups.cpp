#include "CleanupGroups.hpp"

#include "engine/similarity/SimilarityThresholds.hpp"

#include <algorithm>
#include <string>
#include <unordered_set>

namespace brevant {

std::vector<DuplicateGroup> CleanupGroups::of(const std::vector<DuplicateGroup>& identical,
                                              const SimilarityIndex* index) const {
    if (extra == Extra::none || index == nullptr) {
        return identical;
    }
    std::vector<DuplicateGroup> grouped =
        extra == Extra::series ? index->series(kSeriesWindow, SimilarityThresholds::kSeriesRelated)
                               : index->groups(preset);
    return withIdentical(std::move(grouped), identical);
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

} // namespace brevant
