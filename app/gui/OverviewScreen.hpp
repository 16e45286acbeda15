#pragma once

#include "engine/scan/MatchKind.hpp"

#include <QWidget>

#include <map>

class QComboBox;
class QFrame;
class QLabel;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace brevant::gui {

class LeftOutList;
class PhotoCleanupModel;

// What a scan found: the groups by kind with the bytes that cleaning would
// free, the similarity preset (changing it regroups at once), the skipped
// files and excluded folders by reason, the notice of an incomplete scan,
// for a catalog the notice of a version marking was not tested with and the
// photos already marked in it, and the way into review.
class OverviewScreen : public QWidget {
    Q_OBJECT

public:
    explicit OverviewScreen(PhotoCleanupModel& model, QWidget* parent = nullptr);

    // The review screen arrives separately; until it is there the button
    // stays disabled.
    void setReviewAvailable(bool available);
    // Brings the skipped files into view.
    void showSkipped();
    // Puts the focus on what comes next: the review, or a new scan when
    // there is nothing to review.
    void focusNextStep();

    [[nodiscard]] QString headline() const;
    [[nodiscard]] QString groupsFigure() const;
    [[nodiscard]] QString bytesFigure() const;
    // "2 groups · 4 pictures · 6.1 MB", or "" when the kind is absent.
    [[nodiscard]] QString kindLine(MatchKind kind) const;
    [[nodiscard]] bool showsIncompleteNotice() const;
    // For a catalog: that its version is new to Brevant ("" when it is
    // not), and how many photos its application already has on their way
    // out ("" when none).
    [[nodiscard]] QString catalogNotice() const;
    [[nodiscard]] QString alreadyMarkedLine() const;

    [[nodiscard]] LeftOutList* leftOut() const { return leftOut_; }

    [[nodiscard]] QComboBox* presetChoice() const { return preset_; }

    [[nodiscard]] QPushButton* reviewButton() const { return review_; }

    [[nodiscard]] QPushButton* newScanButton() const { return newScan_; }

    // The heading of a kind of group.
    [[nodiscard]] static QString kindTitle(MatchKind kind);

Q_SIGNALS:
    void reviewRequested();

protected:
    // Enter goes on to the review from the skipped files too, whose
    // headers and lists do not take it.
    void keyPressEvent(QKeyEvent* event) override;

private:
    void showResult();
    void showCatalogFacts();
    void fillKinds();
    void fillLeftOut();

    PhotoCleanupModel& model_;
    bool reviewAvailable_ = false;
    QScrollArea* scroll_;
    QLabel* headline_;
    QLabel* subtitle_;
    QLabel* groups_;
    QLabel* pictures_;
    QLabel* bytes_;
    QFrame* incomplete_;
    QFrame* untested_;
    QLabel* alreadyMarked_;
    QFrame* kindsCard_;
    QVBoxLayout* kindRows_;
    std::map<MatchKind, QLabel*> kindLines_;
    QWidget* presetRow_;
    QComboBox* preset_;
    QLabel* presetExplanation_;
    QFrame* leftOutCard_;
    LeftOutList* leftOut_;
    QPushButton* newScan_;
    QPushButton* review_;
};

} // namespace brevant::gui
