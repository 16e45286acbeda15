#include "ResumedReview.hpp"

#include "engine/review/ReviewSession.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <string_view>

namespace brevant {

namespace {

enum class Restored {
    marked,
    changed,
    refused,
};

// A copy that has left every group is judged by its file as it is now.
bool isUnchangedOnDisk(const SavedReview::Copy& copy) {
    auto now = FileSnapshot::read(copy.path);
    return now && now->isUnchanged(copy.snapshot);
}

Restored restoreMark(const SavedReview::Copy& copy, ReviewSession& session) {
    const PhotoAsset* now = session.asset(copy.path);
    if (now == nullptr) {
        return isUnchangedOnDisk(copy) ? Restored::refused : Restored::changed;
    }
    if (!now->snapshot.isUnchanged(copy.snapshot)) {
        return Restored::changed;
    }
    if (session.isMarked(copy.path)) {
        return Restored::marked;
    }
    return session.mark(copy.path) ? Restored::marked : Restored::refused;
}

bool isSameGroup(const SavedReview::Group& saved, const DuplicateGroup& group) {
    return std::ranges::equal(
        saved.members, group.members, [](const auto& copy, const auto& member) {
            return copy.path == member.path && member.snapshot.isUnchanged(copy.snapshot);
        });
}

std::string counted(int n, std::string_view one, std::string_view many) {
    return fmt::format("{} {}", n, n == 1 ? one : many);
}

} // namespace

ResumedReview ResumedReview::restore(const SavedReview& saved, ReviewSession& session) {
    ResumedReview resumed{.saved = saved.saved};
    for (const auto& copy : saved.marks) {
        switch (restoreMark(copy, session)) {
        case Restored::marked:
            ++resumed.restored;
            break;
        case Restored::changed:
            ++resumed.changed;
            break;
        case Restored::refused:
            ++resumed.refused;
            break;
        }
    }
    for (const auto& group : saved.reviewed) {
        const DuplicateGroup* now =
            group.members.empty() ? nullptr : session.group(group.members.front().path);
        if (now != nullptr && now->id == group.id && isSameGroup(group, *now)) {
            resumed.reviewed.insert(group.id);
        }
    }
    return resumed;
}

std::string ResumedReview::message() const {
    if (restored == 0 && changed == 0 && refused == 0 && reviewed.empty()) {
        return {};
    }
    std::string text = fmt::format(
        "Resumed your last review of these folders: {} restored, {} dropped because {} changed",
        counted(restored, "mark", "marks"), changed, changed == 1 ? "its file" : "their files");
    if (refused > 0) {
        text += fmt::format(", {} no longer allowed or no longer in these results", refused);
    }
    if (!reviewed.empty()) {
        text += fmt::format("; {} already reviewed",
                            counted(static_cast<int>(reviewed.size()), "group", "groups"));
    }
    return text + ".";
}

} // namespace brevant
