#include "GroupListView.hpp"

#include <QStyledItemDelegate>

namespace brevant::gui {

namespace {

// Rows as wide as the list and never wider, so that a long name loses its
// middle instead of running under a scroll bar.
class ListWideDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override {
        return {1, QStyledItemDelegate::sizeHint(option, index).height()};
    }
};

} // namespace

GroupListView::GroupListView(QWidget* parent)
    : QListView(parent) {
    setObjectName(QStringLiteral("groupList"));
    setItemDelegate(new ListWideDelegate(this));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setUniformItemSizes(true);
    setIconSize(QSize(48, 48));
    // Long file names lose their middle, never the size at the end.
    setTextElideMode(Qt::ElideMiddle);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
}

void GroupListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                const QList<int>& roles) {
    // Skips QListView's own, whose only work in list mode is the relayout.
    // NOLINTNEXTLINE(bugprone-parent-virtual-call)
    QAbstractItemView::dataChanged(topLeft, bottomRight, roles);
}

} // namespace brevant::gui
