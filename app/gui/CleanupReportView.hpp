#pragma once

#include "app/gui/CleanupController.hpp"
#include "engine/cleanup/CleanupReport.hpp"

#include <QWidget>

#include <optional>
#include <string>
#include <vector>

class QFrame;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace brevant::gui {

// One cleanup as its journal tells it: "Cleanup finished" (or, for a run
// worked out afterwards, "An earlier cleanup was interrupted" with why),
// the counts by outcome, the bytes the Trash now holds, every picture with
// its outcome and notes, and Put Back for a picture, a selection or the
// whole cleanup. A place taken since the move is never overwritten: the
// picture can go back under another name instead.
class CleanupReportView : public QWidget {
    Q_OBJECT

public:
    explicit CleanupReportView(CleanupController& cleanups, QWidget* parent = nullptr);

    void setReport(const CleanupReport& report);

    [[nodiscard]] const std::optional<CleanupReport>& report() const { return report_; }

    [[nodiscard]] QString title() const;
    // The interrupted explanation, or "".
    [[nodiscard]] QString explanation() const;
    // "Moved", "Skipped", "Failed", "Unknown", "Put back", "In the Trash".
    [[nodiscard]] QString figure(const QString& name) const;
    [[nodiscard]] QString generalNote() const;
    // What the last Put Back said, one sentence per picture not put back.
    [[nodiscard]] QString putBackMessage() const;

    [[nodiscard]] QTreeWidget* items() const { return items_; }

    [[nodiscard]] QPushButton* putBackButton() const { return putBack_; }

    [[nodiscard]] QPushButton* putBackAllButton() const { return putBackAll_; }

    [[nodiscard]] QPushButton* anotherNameButton() const { return anotherName_; }

    // The row of an item by its planned path, or -1.
    [[nodiscard]] int row(const std::string& path) const;
    // The outcome column of a row.
    [[nodiscard]] QString outcomeText(int row) const;
    // Selects the rows of these paths only.
    void select(const std::vector<std::string>& paths);

    // The sentence for an item's outcome. A picture put back is named
    // only when it went back under another name: the folder is its own.
    [[nodiscard]] static QString outcomeSentence(const ItemReport& item);

private:
    void fill();
    void updateButtons();
    void putBackSelected();
    void putBackAll();
    void putBackUnderAnotherName();
    void startPutBack(std::vector<std::string> itemIDs, bool underAnotherName);
    void showPutBack(const std::optional<CleanupReport>& report,
                     const std::vector<PutBackResult>& results);

    CleanupController& cleanups_;
    std::optional<CleanupReport> report_;
    // The pictures whose place was taken at the last Put Back.
    std::vector<std::string> occupied_;
    // This view asked for the Put Back under way.
    bool waiting_ = false;
    QLabel* title_;
    QLabel* explanation_;
    QLabel* started_;
    QWidget* figures_;
    QFrame* note_;
    QTreeWidget* items_;
    QFrame* message_;
    QPushButton* putBack_;
    QPushButton* putBackAll_;
    QPushButton* anotherName_;
};

} // namespace brevant::gui
