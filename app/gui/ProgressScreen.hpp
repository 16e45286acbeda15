#pragma once

#include "engine/pipeline/PipelineProgress.hpp"

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;

namespace brevant::gui {

class PhotoCleanupModel;
using ModelProgress = PipelineProgress;

// A scan under way: the stage, the counts so far, a bar that fills where
// the total is known (and moves to show life where it is not), the time
// elapsed, and Cancel.
class ProgressScreen : public QWidget {
    Q_OBJECT

public:
    explicit ProgressScreen(PhotoCleanupModel& model, QWidget* parent = nullptr);

    [[nodiscard]] QString stageText() const;
    // "Found", "Examined", "Skipped", "Matched" to the number shown.
    [[nodiscard]] QString countText(const QString& name) const;

    [[nodiscard]] QProgressBar* bar() const { return bar_; }

    [[nodiscard]] QPushButton* cancelButton() const { return cancel_; }

    [[nodiscard]] QString elapsedText() const;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void display(const ModelProgress& progress);
    void tick();

    PhotoCleanupModel& model_;
    QLabel* title_;
    QLabel* stage_;
    QLabel* detail_;
    QProgressBar* bar_;
    QLabel* found_;
    QLabel* examined_;
    QLabel* skipped_;
    QLabel* matched_;
    QLabel* elapsed_;
    QPushButton* cancel_;
    QTimer* clock_;
};

} // namespace brevant::gui
