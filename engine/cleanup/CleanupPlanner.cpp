#include "CleanupPlanner.hpp"

#include "engine/review/FolderPaths.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace brevant {

namespace {

// One group with marks, and which of its members are marked.
struct MarkedGroup {
    const DuplicateGroup* group = nullptr;
    std::vector<bool> marked;

    [[nodiscard]] bool allMarked() const {
        return std::ranges::all_of(marked, [](bool isMarked) { return isMarked; });
    }
};

std::vector<MarkedGroup> groupsWithMarks(const std::vector<DuplicateGroup>& groups,
                                         const std::set<std::string>& marks) {
    std::vector<MarkedGroup> found;
    for (const auto& group : groups) {
        MarkedGroup entry{&group, {}};
        entry.marked.reserve(group.members.size());
        for (const auto& member : group.members) {
            entry.marked.push_back(marks.contains(member.path));
        }
        if (std::ranges::any_of(entry.marked, [](bool isMarked) { return isMarked; })) {
            found.push_back(std::move(entry));
        }
    }
    return found;
}

std::optional<PlanError> notAllowed(const PhotoAsset& asset, const LockStore& locks,
                                    const std::set<std::string>& protectedRoots) {
    if (locks.isLocked(asset)) {
        return PlanError::markedButNotAllowed(asset.path, std::string(PlanError::kLocked));
    }
    if (auto reason = asset.fixedKeepReason()) {
        return PlanError::markedButNotAllowed(asset.path, std::move(*reason));
    }
    if (folder_paths::innermost(protectedRoots, asset.path)) {
        return PlanError::markedButNotAllowed(asset.path, std::string(PlanError::kProtected));
    }
    return std::nullopt;
}

PlannedRemoval removalOf(const PhotoAsset& asset, const MarkedGroup& entry) {
    const DuplicateGroup& group = *entry.group;
    PlannedRemoval removal;
    removal.path = CleanupPlanner::plannedPath(asset);
    removal.root = asset.root;
    removal.snapshot = asset.snapshot;
    removal.sha256 = group.kind == MatchKind::identical ? group.id : std::string();
    for (std::size_t i = 0; i < group.members.size(); ++i) {
        if (!entry.marked[i]) {
            const PhotoAsset& kept = group.members[i];
            removal.keepers.push_back({CleanupPlanner::plannedPath(kept), kept.snapshot});
        }
    }
    removal.isCloudSynced = asset.isCloudSynced;
    removal.volumeName = asset.volumeName;
    removal.isExternalVolume = asset.isExternalVolume;
    removal.matchKind = group.kind;
    if (asset.library) {
        removal.libraryFilename = asset.library->filename;
    }
    if (asset.catalog) {
        removal.catalog = asset.catalog->item();
    }
    return removal;
}

std::vector<std::string> rootsOf(const std::vector<MarkedGroup>& groups) {
    std::set<std::string> roots;
    for (const auto& entry : groups) {
        for (const auto& member : entry.group->members) {
            if (!member.root.empty()) {
                roots.insert(member.root);
            }
        }
    }
    return {roots.begin(), roots.end()};
}

} // namespace

std::string CleanupPlanner::plannedPath(const PhotoAsset& asset) {
    if (!asset.library || asset.path.starts_with(kLibraryPrefix)) {
        return asset.path;
    }
    return std::string(kLibraryPrefix) + asset.library->id;
}

std::expected<CleanupPlan, PlanError> CleanupPlanner::plan(const ReviewSession& session, Date now) {
    return plan(session.groups(), session.marks(), *session.locks(), session.protectedRoots(), now);
}

std::expected<CleanupPlan, PlanError>
CleanupPlanner::plan(const std::vector<DuplicateGroup>& groups, const std::set<std::string>& marks,
                     const LockStore& locks, const std::set<std::string>& protectedRoots,
                     Date now) {
    std::vector<MarkedGroup> marked = groupsWithMarks(groups, marks);
    if (marked.empty()) {
        return std::unexpected(PlanError::nothingMarked());
    }
    for (const auto& entry : marked) {
        if (entry.allMarked()) {
            return std::unexpected(PlanError::groupWithoutKeeper(entry.group->id));
        }
    }
    for (const auto& entry : marked) {
        for (std::size_t i = 0; i < entry.group->members.size(); ++i) {
            if (!entry.marked[i]) {
                continue;
            }
            if (auto refused = notAllowed(entry.group->members[i], locks, protectedRoots)) {
                return std::unexpected(std::move(*refused));
            }
        }
    }
    CleanupPlan plan;
    plan.id = Uuid::make();
    plan.created = Date{std::floor(now.secondsSinceReferenceDate)};
    plan.roots = rootsOf(marked);
    std::set<std::string> planned;
    for (const auto& entry : marked) {
        for (std::size_t i = 0; i < entry.group->members.size(); ++i) {
            const PhotoAsset& member = entry.group->members[i];
            if (entry.marked[i] && planned.insert(member.path).second) {
                plan.removals.push_back(removalOf(member, entry));
            }
        }
    }
    return plan;
}

} // namespace brevant
