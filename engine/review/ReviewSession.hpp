#pragma once

#include "engine/review/GroupOrderKeys.hpp"
#include "engine/review/KeeperMeasures.hpp"
#include "engine/review/KeeperPolicy.hpp"
#include "engine/review/LockStore.hpp"
#include "engine/review/MarkRefusal.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/PhotoAsset.hpp"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace brevant {

// The user's marks over the groups of one scan. It refuses any mark that
// would break the safety rules: a locked copy, a copy in a protected folder,
// a copy that cannot move on its own, and the last unmarked copy of a group
// are never marked. A value owned by the window's model (not shared between
// threads); only the lock store inside is shared.
class ReviewSession {
public:
    using Priority = KeeperPolicy::Priority;

    // What the caller tells the user when markAllSuggested marks nothing.
    static constexpr std::string_view kNothingMoreToMark =
        "Nothing more to mark: the rest are kept copies, locked or protected.";

    // Without a lock store the locks live in memory only. Priorities start
    // as the standard order and no measurements are known until
    // setSimilarity.
    ReviewSession(std::vector<DuplicateGroup> groups, std::shared_ptr<LockStore> locks,
                  std::set<std::string> protectedRoots, std::vector<std::string> inboxFolders);

    [[nodiscard]] const std::vector<DuplicateGroup>& groups() const { return groups_; }

    [[nodiscard]] const GroupOrderKeys& orderKeys() const { return orderKeys_; }

    [[nodiscard]] const std::set<std::string>& marks() const { return *marks_; }

    // Counts every change to the marks, so that a reader going through them
    // a slice at a time can tell that they changed under it.
    [[nodiscard]] std::uint64_t marksRevision() const { return marksRevision_; }

    // The marks as they stand, shared rather than copied: a worker may go on
    // reading them while this session marks on, which then changes a copy of
    // its own (copying a million marks up front held the window).
    struct MarksAt {
        std::shared_ptr<const std::set<std::string>> marks;
        std::uint64_t revision = 0;
    };

    [[nodiscard]] MarksAt marksAt() const { return {marks_, marksRevision_}; }

    [[nodiscard]] const std::shared_ptr<LockStore>& locks() const { return locks_; }

    [[nodiscard]] const std::set<std::string>& protectedRoots() const { return protectedRoots_; }

    [[nodiscard]] const std::vector<std::string>& inboxFolders() const { return inboxFolders_; }

    [[nodiscard]] const std::vector<Priority>& priorities() const { return priorities_; }

    [[nodiscard]] const std::optional<KeeperMeasures>& similarity() const { return similarity_; }

    void setPriorities(std::vector<Priority> priorities);
    // The measurements of the scan (KeeperMeasures::from its index).
    void setSimilarity(std::optional<KeeperMeasures> similarity);
    // Copies that now lie in a protected folder are unmarked: a protected
    // copy is never left marked.
    void setProtectedRoots(std::set<std::string> roots);
    void setInboxFolders(std::vector<std::string> folders);

    // The keeper policy's view of this session's locks, folders,
    // priorities and measurements.
    [[nodiscard]] KeeperPolicy::Context context() const;

    // The first group holding the path, and the copy itself; nothing when
    // the path is in no group. Valid while the session lives.
    [[nodiscard]] const DuplicateGroup* group(const std::string& containing) const;
    [[nodiscard]] const PhotoAsset* asset(const std::string& path) const;
    // Indices of the groups with this id, ascending: the window finds the
    // groups a user has seen without going through every group.
    [[nodiscard]] std::vector<std::size_t> indicesOf(std::string_view id) const;
    [[nodiscard]] std::optional<KeeperPolicy::Suggestion>
    suggestion(const DuplicateGroup& group) const;
    [[nodiscard]] bool isLocked(const std::string& path) const;
    [[nodiscard]] bool isMarked(const std::string& path) const;

    // Why the copy may not be marked now, tested in this order: not in
    // these results, locked, in a protected folder (the innermost one that
    // holds it), cannot move on its own, the last unmarked copy of a group
    // (of any group that holds it). Nothing when it may be marked.
    [[nodiscard]] std::optional<MarkRefusal> refusal(const std::string& toMark) const;

    [[nodiscard]] std::expected<void, MarkRefusal> mark(const std::string& path);
    void unmark(const std::string& path);
    // Unmarks a marked copy, otherwise marks it.
    [[nodiscard]] std::expected<void, MarkRefusal> toggle(const std::string& path);
    // Unmarks the copy first (a locked copy is never left marked), then
    // locks it in the store.
    [[nodiscard]] std::expected<void, MarkRefusal> lock(const std::string& path);
    // Removes its locks; it stays unmarked.
    [[nodiscard]] std::expected<void, MarkRefusal> unlock(const std::string& path);

    // Marks every copy the suggestion does not keep, in member order,
    // skipping those refused at that moment; answers how many were newly
    // marked.
    int markSuggested(const DuplicateGroup& group);
    // The same for the groups from `first` up to (not including) `last`, in
    // order; the window marks every group a slice at a time so that it
    // never waits on a million of them at once.
    int markSuggestedIn(std::size_t first, std::size_t last);
    // The same for every group in order; the total.
    int markAllSuggested();
    void clearMarks(const DuplicateGroup& group);
    // After a rescan: marks again each copy the older session had marked
    // that is in a group here, through the same refusals; refused ones are
    // dropped without a word, and so is a path that now holds another file
    // (its snapshot changed), since that file was never marked.
    void carryMarks(const ReviewSession& older);
    // The same with older's marks as they stood at some revision: for a
    // worker, while older's own may be changing.
    void carryMarks(const ReviewSession& older, const std::set<std::string>& olderMarks);

    // In group order, then member order; each copy once.
    [[nodiscard]] std::vector<PhotoAsset> markedAssets() const;

    [[nodiscard]] std::int64_t markedBytes() const { return markedBytes_; }

private:
    int markSuggested(const DuplicateGroup& group, const std::vector<KeeperPolicy::Rule>& rules);
    [[nodiscard]] std::int64_t sizeOf(const std::string& path) const;
    [[nodiscard]] bool isLastUnmarked(const std::string& path, std::size_t group) const;
    // The marks to change, copied first while a reader shares them.
    std::set<std::string>& writableMarks();

    std::vector<DuplicateGroup> groups_;
    // Indices of the groups holding each path, in group order.
    std::unordered_map<std::string, std::vector<std::size_t>> groupsByPath_;
    // (hash of the id, group index), sorted: numbers rather than views into
    // the groups, so a copied session keeps a valid one.
    std::vector<std::pair<std::size_t, std::size_t>> groupsById_;
    GroupOrderKeys orderKeys_;
    std::shared_ptr<std::set<std::string>> marks_ = std::make_shared<std::set<std::string>>();
    std::uint64_t marksRevision_ = 0;
    // Kept with every mark and unmark: the window shows it after each one,
    // and adding up half a million marks each time was felt.
    std::int64_t markedBytes_ = 0;
    std::shared_ptr<LockStore> locks_;
    std::set<std::string> protectedRoots_;
    std::vector<std::string> inboxFolders_;
    std::vector<Priority> priorities_;
    std::optional<KeeperMeasures> similarity_;
};

} // namespace brevant
