#include "ReviewSession.hpp"

#include "engine/review/FolderPaths.hpp"

#include <algorithm>
#include <functional>
#include <unordered_set>
#include <utility>

namespace brevant {

ReviewSession::ReviewSession(std::vector<DuplicateGroup> groups, std::shared_ptr<LockStore> locks,
                             std::set<std::string> protectedRoots,
                             std::vector<std::string> inboxFolders)
    : groups_(std::move(groups))
    , locks_(locks ? std::move(locks) : std::make_shared<LockStore>(std::nullopt))
    , protectedRoots_(std::move(protectedRoots))
    , inboxFolders_(std::move(inboxFolders))
    , priorities_(KeeperPolicy::standardPriorities()) {
    orderKeys_ = GroupOrderKeys::of(groups_);
    groupsById_.reserve(groups_.size());
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        groupsById_.emplace_back(std::hash<std::string_view>{}(groups_[g].id), g);
    }
    std::ranges::sort(groupsById_);
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        for (const auto& member : groups_[g].members) {
            auto& holding = groupsByPath_[member.path];
            if (holding.empty() || holding.back() != g) {
                holding.push_back(g);
            }
        }
    }
}

std::vector<std::size_t> ReviewSession::indicesOf(std::string_view id) const {
    std::size_t hash = std::hash<std::string_view>{}(id);
    auto first = std::ranges::lower_bound(groupsById_, std::pair{hash, std::size_t{0}});
    std::vector<std::size_t> indices;
    for (auto at = first; at != groupsById_.end() && at->first == hash; ++at) {
        if (groups_[at->second].id == id) {
            indices.push_back(at->second);
        }
    }
    return indices;
}

void ReviewSession::setPriorities(std::vector<Priority> priorities) {
    priorities_ = std::move(priorities);
}

void ReviewSession::setSimilarity(std::optional<KeeperMeasures> similarity) {
    similarity_ = std::move(similarity);
}

void ReviewSession::setProtectedRoots(std::set<std::string> roots) {
    protectedRoots_ = std::move(roots);
    bool anyProtected = std::ranges::any_of(*marks_, [this](const std::string& path) {
        return folder_paths::innermost(protectedRoots_, path).has_value();
    });
    if (!anyProtected) {
        return;
    }
    std::erase_if(writableMarks(), [this](const std::string& path) {
        if (!folder_paths::innermost(protectedRoots_, path)) {
            return false;
        }
        markedBytes_ -= sizeOf(path);
        return true;
    });
    ++marksRevision_;
}

std::set<std::string>& ReviewSession::writableMarks() {
    if (marks_.use_count() > 1) {
        marks_ = std::make_shared<std::set<std::string>>(*marks_);
    }
    return *marks_;
}

void ReviewSession::setInboxFolders(std::vector<std::string> folders) {
    inboxFolders_ = std::move(folders);
}

KeeperPolicy::Context ReviewSession::context() const {
    KeeperPolicy::Context context;
    context.isLocked = [locks = locks_](const PhotoAsset& asset) { return locks->isLocked(asset); };
    context.protectedRoots = protectedRoots_;
    context.inboxFolders = inboxFolders_;
    context.priorities = priorities_;
    if (similarity_) {
        similarity_->applyTo(context);
    }
    return context;
}

const DuplicateGroup* ReviewSession::group(const std::string& containing) const {
    auto found = groupsByPath_.find(containing);
    return found != groupsByPath_.end() ? &groups_[found->second.front()] : nullptr;
}

const PhotoAsset* ReviewSession::asset(const std::string& path) const {
    const DuplicateGroup* holding = group(path);
    if (holding == nullptr) {
        return nullptr;
    }
    auto member = std::ranges::find(holding->members, path, &PhotoAsset::path);
    return member != holding->members.end() ? &*member : nullptr;
}

std::optional<KeeperPolicy::Suggestion>
ReviewSession::suggestion(const DuplicateGroup& group) const {
    return KeeperPolicy::suggestion(group, context());
}

bool ReviewSession::isLocked(const std::string& path) const {
    const PhotoAsset* found = asset(path);
    return found != nullptr && locks_->isLocked(*found);
}

bool ReviewSession::isMarked(const std::string& path) const {
    return marks_->contains(path);
}

bool ReviewSession::isLastUnmarked(const std::string& path, std::size_t group) const {
    return std::ranges::all_of(groups_[group].members, [&](const PhotoAsset& member) {
        return member.path == path || marks_->contains(member.path);
    });
}

std::optional<MarkRefusal> ReviewSession::refusal(const std::string& toMark) const {
    auto holding = groupsByPath_.find(toMark);
    const PhotoAsset* found = asset(toMark);
    if (holding == groupsByPath_.end() || found == nullptr) {
        return MarkRefusal::notFound();
    }
    if (locks_->isLocked(*found)) {
        return MarkRefusal::locked();
    }
    if (auto root = folder_paths::innermost(protectedRoots_, toMark)) {
        return MarkRefusal::protectedFolder(std::move(*root));
    }
    if (auto reason = found->fixedKeepReason()) {
        return MarkRefusal::fixed(std::move(*reason));
    }
    // A copy in two groups must leave a copy in each of them.
    for (std::size_t group : holding->second) {
        if (isLastUnmarked(toMark, group)) {
            return MarkRefusal::lastCopy();
        }
    }
    return std::nullopt;
}

std::expected<void, MarkRefusal> ReviewSession::mark(const std::string& path) {
    if (auto refused = refusal(path)) {
        return std::unexpected(std::move(*refused));
    }
    if (!marks_->contains(path)) {
        writableMarks().insert(path);
        markedBytes_ += sizeOf(path);
        ++marksRevision_;
    }
    return {};
}

void ReviewSession::unmark(const std::string& path) {
    if (marks_->contains(path)) {
        writableMarks().erase(path);
        markedBytes_ -= sizeOf(path);
        ++marksRevision_;
    }
}

std::int64_t ReviewSession::sizeOf(const std::string& path) const {
    const PhotoAsset* found = asset(path);
    return found != nullptr ? found->size() : 0;
}

std::expected<void, MarkRefusal> ReviewSession::toggle(const std::string& path) {
    if (isMarked(path)) {
        unmark(path);
        return {};
    }
    return mark(path);
}

std::expected<void, MarkRefusal> ReviewSession::lock(const std::string& path) {
    const PhotoAsset* found = asset(path);
    if (found == nullptr) {
        return std::unexpected(MarkRefusal::notFound());
    }
    unmark(path);
    locks_->add(*found);
    return {};
}

std::expected<void, MarkRefusal> ReviewSession::unlock(const std::string& path) {
    const PhotoAsset* found = asset(path);
    if (found == nullptr) {
        return std::unexpected(MarkRefusal::notFound());
    }
    locks_->remove(*found);
    return {};
}

int ReviewSession::markSuggested(const DuplicateGroup& group) {
    return markSuggested(group, KeeperPolicy::rules(context()));
}

int ReviewSession::markSuggested(const DuplicateGroup& group,
                                 const std::vector<KeeperPolicy::Rule>& rules) {
    auto suggestion = KeeperPolicy::suggestion(group, rules);
    if (!suggestion) {
        return 0;
    }
    int marked = 0;
    for (const auto& member : group.members) {
        if (member.path == suggestion->keeperID || isMarked(member.path)) {
            continue;
        }
        if (mark(member.path)) {
            ++marked;
        }
    }
    return marked;
}

int ReviewSession::markSuggestedIn(std::size_t first, std::size_t last) {
    auto rules = KeeperPolicy::rules(context());
    last = std::min(last, groups_.size());
    int marked = 0;
    for (std::size_t g = first; g < last; ++g) {
        marked += markSuggested(groups_[g], rules);
    }
    return marked;
}

int ReviewSession::markAllSuggested() {
    return markSuggestedIn(0, groups_.size());
}

void ReviewSession::clearMarks(const DuplicateGroup& group) {
    for (const auto& member : group.members) {
        unmark(member.path);
    }
}

void ReviewSession::carryMarks(const ReviewSession& older) {
    carryMarks(older, older.marks());
}

void ReviewSession::carryMarks(const ReviewSession& older,
                               const std::set<std::string>& olderMarks) {
    // Straight from the marks, in path order: copying every marked copy out
    // of the groups first took seconds over a million pictures.
    for (const auto& path : olderMarks) {
        const PhotoAsset* was = older.asset(path);
        const PhotoAsset* now = asset(path);
        // A different file now at the marked path was never marked.
        if (was != nullptr && now != nullptr && now->snapshot.isUnchanged(was->snapshot)) {
            static_cast<void>(mark(path));
        }
    }
}

std::vector<PhotoAsset> ReviewSession::markedAssets() const {
    std::vector<PhotoAsset> marked;
    std::unordered_set<std::string> listed;
    for (const auto& group : groups_) {
        for (const auto& member : group.members) {
            if (marks_->contains(member.path) && listed.insert(member.path).second) {
                marked.push_back(member);
            }
        }
    }
    return marked;
}

} // namespace brevant
