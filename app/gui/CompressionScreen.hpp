#pragma once

#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QSpinBox;
class QPushButton;
class QStackedWidget;
class QTreeWidget;

namespace brevant {
struct CompressionProgress;
}

namespace brevant::gui {

class CompressionController;

// Compression in the window: the files found with their sizes and the
// expected saving, a card to confirm before anything is written, the run
// with its progress per file and per frame and "Stop After This One", and
// the report read back from the journal.
class CompressionScreen : public QWidget {
    Q_OBJECT

public:
    explicit CompressionScreen(CompressionController& controller, QWidget* parent = nullptr);

    [[nodiscard]] QTreeWidget* candidates() const { return list_; }

    [[nodiscard]] QPushButton* compressButton() const { return compress_; }

    // The smallest file considered, in MB; a change looks again.
    [[nodiscard]] QSpinBox* smallestSize() const { return smallest_; }

    [[nodiscard]] QPushButton* stopButton() const { return stop_; }

    [[nodiscard]] QPushButton* doneButton() const { return done_; }

    // The sentence over the list ("Looking…", the totals).
    [[nodiscard]] QString summaryText() const;
    [[nodiscard]] QString reportText() const;
    [[nodiscard]] bool showsReport() const;
    [[nodiscard]] QString progressText() const;

    // The card: what will happen, to confirm; false when the user declines.
    [[nodiscard]] bool confirm();

private:
    void showSearching();
    void showCandidates();
    void showRun();
    void showProgress(const brevant::CompressionProgress& progress);
    void showReport();

    CompressionController& controller_;
    QStackedWidget* pages_;
    QWidget* listPage_;
    QLabel* summary_;
    QSpinBox* smallest_;
    QTreeWidget* list_;
    QPushButton* compress_;
    QWidget* runPage_;
    QLabel* file_;
    QProgressBar* bar_;
    QPushButton* stop_;
    QWidget* reportPage_;
    QLabel* reportTitle_;
    QPlainTextEdit* report_;
    QPushButton* done_;
};

} // namespace brevant::gui
