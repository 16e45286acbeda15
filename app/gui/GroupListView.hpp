#pragma once

#include <QListView>

namespace brevant::gui {

// The review's list of groups: one line per group, every row as high as the
// others, as wide as the list.
class GroupListView : public QListView {
    Q_OBJECT

public:
    explicit GroupListView(QWidget* parent = nullptr);

protected:
    // QListView lays out every row again when any row's data changes, which
    // with a million pictures' groups fetched took 25 ms per mark or step.
    // Rows here never change height: repainting the changed rows is enough.
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;
};

} // namespace brevant::gui
