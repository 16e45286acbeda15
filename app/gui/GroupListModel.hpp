#pragma once

#include "engine/review/KeeperPolicy.hpp"
#include "engine/scan/DuplicateGroup.hpp"

#include <QAbstractListModel>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace brevant {
class ReviewSession;
}

namespace brevant::gui {

class ThumbnailLoader;

// The groups of a review session as a list, filtered and sorted. Rows are
// handed to the view in batches as it scrolls (canFetchMore / fetchMore)
// and every value is worked out when the view asks for it, so 50,000
// groups open as fast as 50.
//
// A group counts as reviewed once the user has shown it in the compare
// view (markReviewed). That is remembered by the group's id for as long as
// the window is open, so a group that a preset change forms again from the
// same first copy stays reviewed.
//
// Marking does not take rows out of a filtered list at once: the user
// keeps their place, and the filter is applied again when it is chosen.
class GroupListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum class Filter {
        all,
        withMarks,
        withLockedCopies,
        notReviewed,
    };

    enum class Sort {
        // The engine's order: most bytes to free first.
        bytesToFree,
        // By the folder of the first copy, then the engine's order.
        folder,
        // By the newest modification date among the copies, newest first.
        date,
    };

    enum Role {
        kindRole = Qt::UserRole + 1,
        memberCountRole,
        bytesRole,
        markedRole,
        lockedRole,
        reviewedRole,
        keeperRole,
        groupIndexRole,
    };

    static constexpr int kBatch = 200;

    explicit GroupListModel(QObject* parent = nullptr);

    // Starts over with the session's groups (null: no groups), keeping the
    // session for as long as it is shown; reviewed groups are kept.
    void setSession(std::shared_ptr<const ReviewSession> session);
    void setFilter(Filter filter);
    void setSort(Sort sort);

    [[nodiscard]] Filter filter() const { return filter_; }

    // Qt's own sort(column, order) stays reachable beside this one.
    using QAbstractListModel::sort;

    [[nodiscard]] Sort sort() const { return sort_; }

    // Thumbnails of the keepers come from here; none without it.
    void setThumbnails(ThumbnailLoader* thumbnails);

    // The session's index of the group on a row, or -1.
    [[nodiscard]] int groupIndex(int row) const;
    // The row of the group, fetching rows up to it; nothing when the filter
    // leaves it out.
    [[nodiscard]] std::optional<int> rowOf(int groupIndex);

    // Rows the filter lets through, fetched or not.
    [[nodiscard]] int matchingCount() const { return static_cast<int>(order_.size()); }

    void markReviewed(int groupIndex);
    // Groups reviewed before, by id (a resumed review's).
    void addReviewed(const std::set<std::string>& ids);
    [[nodiscard]] bool isReviewed(const DuplicateGroup& group) const;
    // Its marks or locks changed: the view draws its row again.
    void refreshGroup(int groupIndex);
    // Locks, protected folders or priorities changed: every row and keeper.
    void refreshAll();

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    // Without the three virtual calls of the base's check: the view asks
    // for every row's index twice each time it lays the rows out.
    [[nodiscard]] QModelIndex index(int row, int column = 0,
                                    const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

    // "Similar", "Identical"...
    [[nodiscard]] static QString kindName(MatchKind kind);

private:
    void rebuild();
    // What each group is known by: rows and filters read these.
    void resetGroupState();
    void markReviewedGroups();
    [[nodiscard]] bool passes(int groupIndex) const;
    [[nodiscard]] bool hasMark(const DuplicateGroup& group) const;
    [[nodiscard]] bool hasLock(const DuplicateGroup& group) const;
    [[nodiscard]] const KeeperPolicy::Suggestion* keeper(int groupIndex) const;
    [[nodiscard]] QString title(const DuplicateGroup& group) const;
    [[nodiscard]] QString detail(int groupIndex) const;
    [[nodiscard]] QVariant thumbnail(int groupIndex) const;

    std::shared_ptr<const ReviewSession> session_;
    ThumbnailLoader* thumbnails_ = nullptr;
    Filter filter_ = Filter::all;
    Sort sort_ = Sort::bytesToFree;
    // Session indices of the groups that pass, in the chosen order.
    std::vector<int> order_;
    // How many of them the view has been given.
    int fetched_ = 0;
    std::unordered_set<std::string> reviewed_;
    // By session index: whether the group's id is in reviewed_, so that a
    // filter over a million pictures' groups looks nothing up.
    std::vector<char> reviewedGroups_;
    // Suggestions worked out so far (for the rows painted), by session
    // index; nothing where there is none to make.
    mutable std::unordered_map<int, std::optional<KeeperPolicy::Suggestion>> keepers_;
};

} // namespace brevant::gui
