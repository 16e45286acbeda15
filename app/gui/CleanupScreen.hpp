#pragma once

#include "engine/cleanup/CleanupReport.hpp"

#include <QWidget>

#include <deque>
#include <vector>

class QFrame;
class QLabel;
class QProgressBar;
class QPushButton;
class QStackedWidget;

namespace brevant::gui {

class CleanupController;
class CleanupReportView;

// A cleanup under way and then its report: the picture in progress, a bar
// over the planned pictures, and "Stop After This One"; then the report
// read from the journal. Also shows the reports of cleanups that were
// interrupted, one after another, and a plan the executor refused.
class CleanupScreen : public QWidget {
    Q_OBJECT

public:
    explicit CleanupScreen(CleanupController& cleanups, QWidget* parent = nullptr);

    // The reports are shown in turn; Done moves to the next.
    void showReports(const std::vector<CleanupReport>& reports);

    [[nodiscard]] bool showsRun() const;
    [[nodiscard]] bool showsReport() const;
    [[nodiscard]] bool showsRefusal() const;

    [[nodiscard]] QString runDetail() const;
    [[nodiscard]] QString refusalText() const;

    [[nodiscard]] QProgressBar* bar() const { return bar_; }

    [[nodiscard]] QPushButton* stopButton() const { return stop_; }

    [[nodiscard]] QPushButton* doneButton() const { return done_; }

    [[nodiscard]] CleanupReportView* reportView() const { return report_; }

Q_SIGNALS:
    // The user is done with what the screen shows.
    void finished();

private:
    void showRun();
    void showProgress(int handled, int total);
    void showRefusal(const QString& message);
    void next();

    CleanupController& cleanups_;
    std::deque<CleanupReport> waiting_;
    QStackedWidget* pages_;
    QWidget* runPage_;
    QLabel* current_;
    QProgressBar* bar_;
    QLabel* detail_;
    QPushButton* stop_;
    QWidget* reportPage_;
    CleanupReportView* report_;
    QWidget* refusalPage_;
    QFrame* refusal_;
    QPushButton* done_;
};

} // namespace brevant::gui
