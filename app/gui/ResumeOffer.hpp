#pragma once

#include <QFrame>

class QLabel;
class QPushButton;

namespace brevant::gui {

class PhotoCleanupModel;

// The home screen's offer to go on with the last review: which folders, in
// which mode, saved when, and a button that scans them again with the marks
// taken back. Hidden while there is no saved review.
class ResumeOffer : public QFrame {
    Q_OBJECT

public:
    explicit ResumeOffer(PhotoCleanupModel& model, QWidget* parent = nullptr);

    [[nodiscard]] QPushButton* resumeButton() const { return resume_; }

    // "photos, backup: similar versions (Balanced), saved 26/11/2026 01:50".
    [[nodiscard]] QString detailText() const;

private:
    void showReview();

    PhotoCleanupModel& model_;
    QLabel* detail_ = nullptr;
    QPushButton* resume_ = nullptr;
};

} // namespace brevant::gui
