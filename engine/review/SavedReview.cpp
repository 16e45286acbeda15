#include "SavedReview.hpp"

#include "engine/review/ReviewSession.hpp"

#include <algorithm>
#include <utility>

namespace brevant {

SavedReview SavedReview::of(const ReviewSession& session, std::vector<std::string> folders,
                            ScanMode mode, const std::set<std::string>& reviewedIds, Date saved) {
    SavedReview review{.folders = keyFolders(std::move(folders)), .mode = mode, .saved = saved};
    // From the marks themselves, in path order: copying every marked copy
    // out of the groups took seconds over a million pictures.
    review.marks.reserve(session.marks().size());
    for (const auto& path : session.marks()) {
        if (const PhotoAsset* marked = session.asset(path)) {
            review.marks.push_back({.path = path, .snapshot = marked->snapshot});
        }
    }
    if (reviewedIds.empty()) {
        return review;
    }
    for (const auto& group : session.groups()) {
        if (!reviewedIds.contains(group.id)) {
            continue;
        }
        Group kept{.id = group.id};
        for (const auto& member : group.members) {
            kept.members.push_back({.path = member.path, .snapshot = member.snapshot});
        }
        review.reviewed.push_back(std::move(kept));
    }
    return review;
}

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
