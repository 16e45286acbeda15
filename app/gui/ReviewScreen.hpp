#pragma once

#include "engine/scan/DuplicateGroup.hpp"

#include <QWidget>

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>

class QAction;
class QComboBox;
class QLabel;
class QListView;
class QPushButton;

namespace brevant {
class ReviewSession;
}

namespace brevant::gui {

class CompareView;
class GroupListModel;
class Inspector;
class NotDuplicateActions;
class PhotoCleanupModel;
class SuggestedMarking;
class ThumbnailLoader;

// Where the user decides, group after group, which copies go: the group
// list with its filter and order, the compare view of the chosen group and
// the inspector of the chosen copy. Marks, locks and the suggested marks
// are made here by mouse, context menu and keyboard; a refused mark says
// why beside the picture. The running total of what is marked leads on to
// the cleanup.
class ReviewScreen : public QWidget {
    Q_OBJECT

public:
    enum class Command {
        mark,
        unmark,
        toggleMark,
        lock,
        unlock,
        markAllSuggested,
        markSuggested,
        clearMarks,
        nextGroup,
        previousGroup,
        nextCopy,
        previousCopy,
        flip,
        sideBySide,
        zoomIn,
        zoomOut,
        fit,
    };

    explicit ReviewScreen(PhotoCleanupModel& model, QWidget* parent = nullptr);
    ~ReviewScreen() override;
    ReviewScreen(const ReviewScreen&) = delete;
    ReviewScreen& operator=(const ReviewScreen&) = delete;
    ReviewScreen(ReviewScreen&&) = delete;
    ReviewScreen& operator=(ReviewScreen&&) = delete;

    // Takes the model's current groups and shows the first one.
    void open();

    [[nodiscard]] QAction* action(Command command) const { return actions_.at(command); }

    // The marking commands, in the order the Edit menu lists them.
    [[nodiscard]] QList<QAction*> markingActions() const;

    // "Not duplicates" for the group shown, as its menu offers them.
    [[nodiscard]] NotDuplicateActions* notDuplicates() const { return notDuplicates_; }

    [[nodiscard]] GroupListModel* groups() const { return groups_; }

    [[nodiscard]] QListView* list() const { return list_; }

    [[nodiscard]] CompareView* compare() const { return compare_; }

    [[nodiscard]] Inspector* inspector() const { return inspector_; }

    // Shows or hides the inspector beside the compare view; hidden, the
    // pictures have its room.
    void setInspectorShown(bool shown);
    [[nodiscard]] bool isInspectorShown() const;

    [[nodiscard]] QPushButton* inspectorButton() const { return inspectorButton_; }

    [[nodiscard]] ThumbnailLoader* thumbnails() const { return thumbnails_; }

    [[nodiscard]] QComboBox* filterChoice() const { return filter_; }

    [[nodiscard]] QComboBox* sortChoice() const { return sort_; }

    [[nodiscard]] QComboBox* presetChoice() const { return preset_; }

    [[nodiscard]] QPushButton* cleanupButton() const { return cleanup_; }

    [[nodiscard]] QPushButton* overviewButton() const { return back_; }

    // "3 pictures marked · 12.4 MB".
    [[nodiscard]] QString totalText() const;
    // The sentence under the list after a command for every group.
    [[nodiscard]] QString noticeText() const;

    // The session's index of the group shown, or -1.
    [[nodiscard]] int currentGroup() const { return currentGroup_; }

    // Shows the group (a session index), bringing its row into the list.
    void showGroup(int groupIndex);

    // Marks at once what "Mark Suggested Copies in Every Group" still has
    // to mark, so that a cleanup started meanwhile sees every mark.
    void finishMarking();

Q_SIGNALS:
    // The user wants to go on to the cleanup of what is marked.
    void cleanupRequested();
    void overviewRequested();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void buildActions();
    QAction* addCommand(Command command, const QString& name, const QKeySequence& key);
    void run(Command command);
    void resultChanged();
    void rowChanged(int row);
    void moveGroup(int step);
    void markCurrent(Command command);
    void markIn(Command command);
    void marksChanged();
    void markingProgressed(std::size_t groupsDone, std::size_t groups);
    void markingFinished(int marked);
    void markingStopped();
    void refresh();
    void updateFacts();
    void updateInspector();
    void updateTotal();
    void showMenu(int member, const QPoint& global);
    void updateNotDuplicates();
    void openFolder(const QString& folder);
    void setNotice(const QString& text);
    [[nodiscard]] const DuplicateGroup* shownGroup() const;

    PhotoCleanupModel& model_;
    ThumbnailLoader* thumbnails_;
    GroupListModel* groups_;
    QComboBox* filter_;
    QComboBox* sort_;
    QComboBox* preset_;
    QLabel* presetLabel_;
    QListView* list_;
    QLabel* count_;
    CompareView* compare_;
    Inspector* inspector_;
    QWidget* inspectorPane_ = nullptr;
    QPushButton* inspectorButton_ = nullptr;
    // The inspector's first showing depends on the room there is.
    bool inspectorChosen_ = false;
    QLabel* total_;
    QLabel* notice_;
    QPushButton* markAll_;
    SuggestedMarking* marking_;
    QPushButton* back_;
    QPushButton* cleanup_;
    NotDuplicateActions* notDuplicates_;
    std::map<Command, QAction*> actions_;
    // Between the sections of the commands in a menu.
    std::array<QAction*, 3> separators_{};
    int currentGroup_ = -1;
    // The session shown, kept while it is: the model may have made a newer
    // one by the time a view asks.
    std::shared_ptr<ReviewSession> session_;
};

} // namespace brevant::gui
