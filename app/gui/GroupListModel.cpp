#include "GroupListModel.hpp"

#include "app/gui/QtText.hpp"
#include "app/gui/ThumbnailLoader.hpp"
#include "engine/review/ReviewSession.hpp"

#include <QPixmap>

#include <algorithm>
#include <utility>

namespace brevant::gui {

namespace {

constexpr int kIconSide = 48;

} // namespace

GroupListModel::GroupListModel(QObject* parent)
    : QAbstractListModel(parent) {}

void GroupListModel::setSession(std::shared_ptr<const ReviewSession> session) {
    session_ = std::move(session);
    resetGroupState();
    rebuild();
}

void GroupListModel::resetGroupState() {
    keepers_.clear();
    markReviewedGroups();
}

void GroupListModel::markReviewedGroups() {
    std::size_t count = session_ != nullptr ? session_->groups().size() : 0;
    reviewedGroups_.assign(count, 0);
    if (reviewed_.empty() || session_ == nullptr) {
        return;
    }
    // From the few ids seen: looking up each of a million groups' ids held
    // the window for a tenth of a second.
    for (const auto& id : reviewed_) {
        for (std::size_t i : session_->indicesOf(id)) {
            reviewedGroups_[i] = 1;
        }
    }
}

void GroupListModel::setFilter(Filter filter) {
    filter_ = filter;
    rebuild();
}

void GroupListModel::setSort(Sort sort) {
    sort_ = sort;
    rebuild();
}

void GroupListModel::setThumbnails(ThumbnailLoader* thumbnails) {
    thumbnails_ = thumbnails;
}

void GroupListModel::rebuild() {
    beginResetModel();
    order_.clear();
    fetched_ = 0;
    if (session_ != nullptr) {
        auto count = static_cast<int>(session_->groups().size());
        order_.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            if (passes(i)) {
                order_.push_back(i);
            }
        }
        // Ties keep the engine's order, which is the order of the indices.
        if (sort_ == Sort::folder) {
            session_->orderKeys().orderByFolder(order_);
        } else if (sort_ == Sort::date) {
            session_->orderKeys().orderByNewest(order_);
        }
        fetched_ = std::min(kBatch, static_cast<int>(order_.size()));
    }
    endResetModel();
}

bool GroupListModel::passes(int groupIndex) const {
    const DuplicateGroup& group = session_->groups()[groupIndex];
    if (group.members.empty()) {
        return false;
    }
    switch (filter_) {
    case Filter::all:
        return true;
    case Filter::withMarks:
        return hasMark(group);
    case Filter::withLockedCopies:
        return hasLock(group);
    case Filter::notReviewed:
        return reviewedGroups_[groupIndex] == 0;
    }
    return true;
}

bool GroupListModel::hasMark(const DuplicateGroup& group) const {
    return std::ranges::any_of(group.members, [this](const PhotoAsset& member) {
        return session_->isMarked(member.path);
    });
}

bool GroupListModel::hasLock(const DuplicateGroup& group) const {
    return std::ranges::any_of(group.members, [this](const PhotoAsset& member) {
        return session_->locks()->isLocked(member);
    });
}

bool GroupListModel::isReviewed(const DuplicateGroup& group) const {
    return reviewed_.contains(group.id);
}

void GroupListModel::markReviewed(int groupIndex) {
    if (session_ == nullptr || groupIndex < 0 ||
        groupIndex >= static_cast<int>(session_->groups().size())) {
        return;
    }
    if (reviewed_.insert(session_->groups()[groupIndex].id).second) {
        reviewedGroups_[groupIndex] = 1;
        refreshGroup(groupIndex);
    }
}

void GroupListModel::addReviewed(const std::set<std::string>& ids) {
    std::size_t before = reviewed_.size();
    reviewed_.insert(ids.begin(), ids.end());
    if (reviewed_.size() == before) {
        return;
    }
    markReviewedGroups();
    refreshAll();
}

int GroupListModel::groupIndex(int row) const {
    return row >= 0 && row < fetched_ ? order_[row] : -1;
}

std::optional<int> GroupListModel::rowOf(int groupIndex) {
    auto found = std::ranges::find(order_, groupIndex);
    if (found == order_.end()) {
        return std::nullopt;
    }
    auto row = static_cast<int>(found - order_.begin());
    if (row >= fetched_) {
        // Whole batches, so the view's idea of the end stays where it was.
        int wanted = std::min(static_cast<int>(order_.size()), (row / kBatch + 1) * kBatch);
        beginInsertRows({}, fetched_, wanted - 1);
        fetched_ = wanted;
        endInsertRows();
    }
    return row;
}

void GroupListModel::refreshGroup(int groupIndex) {
    keepers_.erase(groupIndex);
    auto found = std::find(order_.begin(), order_.begin() + fetched_, groupIndex);
    if (found == order_.begin() + fetched_) {
        return;
    }
    QModelIndex changed = index(static_cast<int>(found - order_.begin()));
    Q_EMIT dataChanged(changed, changed);
}

void GroupListModel::refreshAll() {
    keepers_.clear();
    if (fetched_ > 0) {
        Q_EMIT dataChanged(index(0), index(fetched_ - 1));
    }
}

int GroupListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : fetched_;
}

QModelIndex GroupListModel::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || row >= fetched_ || column != 0 || parent.isValid()) {
        return {};
    }
    return createIndex(row, column);
}

bool GroupListModel::canFetchMore(const QModelIndex& parent) const {
    return !parent.isValid() && fetched_ < static_cast<int>(order_.size());
}

void GroupListModel::fetchMore(const QModelIndex& parent) {
    if (!canFetchMore(parent)) {
        return;
    }
    int wanted = std::min(static_cast<int>(order_.size()), fetched_ + kBatch);
    beginInsertRows({}, fetched_, wanted - 1);
    fetched_ = wanted;
    endInsertRows();
}

const KeeperPolicy::Suggestion* GroupListModel::keeper(int groupIndex) const {
    auto found = keepers_.find(groupIndex);
    if (found == keepers_.end()) {
        found = keepers_.emplace(groupIndex, session_->suggestion(session_->groups()[groupIndex]))
                    .first;
    }
    const std::optional<KeeperPolicy::Suggestion>& suggestion = found->second;
    if (!suggestion) {
        return nullptr;
    }
    return &*suggestion;
}

QString GroupListModel::kindName(MatchKind kind) {
    switch (kind) {
    case MatchKind::identical:
        return tr("Identical");
    case MatchKind::similar:
        return tr("Similar");
    case MatchKind::series:
        return tr("Series");
    case MatchKind::liveMovie:
        return tr("Live Photo movie");
    }
    return {};
}

QString GroupListModel::title(const DuplicateGroup& group) const {
    // The size on a line of its own, said to be what cleaning frees, so
    // that no row is cut before it.
    return tr("%1 · %2\n%3 to free")
        .arg(kindName(group.kind),
             countText(static_cast<std::int64_t>(group.members.size()), "copy", "copies"),
             byteText(group.extraBytes()));
}

QString GroupListModel::detail(int groupIndex) const {
    const DuplicateGroup& group = session_->groups()[groupIndex];
    QStringList words;
    if (const auto* suggestion = keeper(groupIndex)) {
        const PhotoAsset* kept = session_->asset(suggestion->keeperID);
        words << tr("Keep %1").arg(qtText(kept != nullptr ? kept->name() : suggestion->keeperID));
    }
    auto marked = std::ranges::count_if(group.members, [this](const PhotoAsset& member) {
        return session_->isMarked(member.path);
    });
    if (marked > 0) {
        words << tr("%1 marked").arg(marked);
    }
    if (hasLock(group)) {
        words << tr("locked");
    }
    if (isReviewed(group)) {
        words << tr("seen");
    }
    return words.join(QStringLiteral(" · "));
}

QVariant GroupListModel::thumbnail(int groupIndex) const {
    const auto* suggestion = keeper(groupIndex);
    const PhotoAsset* kept = suggestion ? session_->asset(suggestion->keeperID) : nullptr;
    // An empty square until the thumbnail is there, so every row keeps
    // one height.
    static const QPixmap blank = [] {
        QPixmap square(kIconSide, kIconSide);
        square.fill(Qt::transparent);
        return square;
    }();
    if (thumbnails_ == nullptr || kept == nullptr) {
        return blank;
    }
    QImage image = thumbnails_->thumbnail(*kept);
    if (image.isNull()) {
        return blank;
    }
    return QPixmap::fromImage(
        image.scaled(kIconSide, kIconSide, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

QVariant GroupListModel::data(const QModelIndex& index, int role) const {
    if (session_ == nullptr || !index.isValid() || index.row() >= fetched_) {
        return {};
    }
    int groupIndex = order_[index.row()];
    const DuplicateGroup& group = session_->groups()[groupIndex];
    switch (role) {
    case Qt::DisplayRole:
        return QStringLiteral("%1\n%2").arg(title(group), detail(groupIndex));
    case Qt::ToolTipRole:
        // The whole row, in case the list is too narrow for it.
        return QStringLiteral("%1\n%2\n%3")
            .arg(title(group), detail(groupIndex), qtText(group.members.front().folder()));
    case Qt::DecorationRole:
        return thumbnail(groupIndex);
    case kindRole:
        return static_cast<int>(group.kind);
    case memberCountRole:
        return static_cast<int>(group.members.size());
    case bytesRole:
        return static_cast<qlonglong>(group.extraBytes());
    case markedRole:
        return hasMark(group);
    case lockedRole:
        return hasLock(group);
    case reviewedRole:
        return isReviewed(group);
    case keeperRole: {
        const auto* suggestion = keeper(groupIndex);
        return suggestion ? qtText(suggestion->keeperID) : QString();
    }
    case groupIndexRole:
        return groupIndex;
    default:
        return {};
    }
}

} // namespace brevant::gui
