#pragma once

#include "app/gui/CatalogMarkings.hpp"
#include "app/gui/CleanupSettings.hpp"
#include "app/gui/Worker.hpp"
#include "engine/cleanup/CleanupPlan.hpp"

#include <QDialog>

#include <optional>
#include <string>

class QFrame;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace brevant::gui {

class PhotoCleanupModel;

// What marking the reviewed copies in their catalog will do, and doing it
// once the user confirms: Rejected in Lightroom Classic, Red in Capture One.
// The plan is made from the model's marks when the card opens; the marking
// runs on a worker, and its refusal or its outcome is shown in the card.
class CatalogMarkingCard : public QDialog {
    Q_OBJECT

public:
    enum class State {
        // A plan is there to confirm.
        ready,
        // No plan could be made; the notice says why.
        unplannable,
        marking,
        // The catalog was left as it was; the notice says why.
        refused,
        // Done (possibly with nothing left to mark); the result says what.
        marked,
    };

    CatalogMarkingCard(PhotoCleanupModel& model, CleanupSettings::Scope scope,
                       QWidget* parent = nullptr);
    CatalogMarkingCard(const CatalogMarkingCard&) = delete;
    CatalogMarkingCard& operator=(const CatalogMarkingCard&) = delete;
    CatalogMarkingCard(CatalogMarkingCard&&) = delete;
    CatalogMarkingCard& operator=(CatalogMarkingCard&&) = delete;
    // Waits for a marking under way: the catalog is never left half-seen.
    ~CatalogMarkingCard() override;

    [[nodiscard]] State state() const { return state_; }

    [[nodiscard]] CleanupSettings::Scope scope() const { return scope_; }

    [[nodiscard]] QPushButton* confirmButton() const { return confirm_; }

    [[nodiscard]] QPushButton* closeButton() const { return close_; }

    // The photos the plan marks.
    [[nodiscard]] int plannedCount() const;
    // Why no plan could be made, or why the marking was refused.
    [[nodiscard]] QString noticeText() const;
    // What the marking did, including how to finish in the application.
    [[nodiscard]] QString resultText() const;

    // Starts the marking (when there is a plan not yet carried out).
    void confirm();

    void reject() override;

Q_SIGNALS:
    // The marking ended: refused or done.
    void markingFinished();

private:
    struct Outcome;

    void showPlan();
    void showNotice(const QString& text);
    void finish(const Outcome& outcome);
    void setState(State state);

    PhotoCleanupModel& model_;
    CleanupSettings::Scope scope_;
    std::string catalog_;
    CatalogMarkings markings_;
    std::optional<CleanupPlan> plan_;
    State state_ = State::ready;
    // The catalog's version was not tested: marking is not offered.
    bool untested_ = false;

    QLabel* summary_;
    QTreeWidget* photos_;
    QLabel* safety_;
    QFrame* notice_;
    QFrame* outcome_;
    QLabel* result_;
    QLabel* busy_;
    QPushButton* close_;
    QPushButton* confirm_;
    // Last: a marking under way finishes before anything else goes.
    Worker worker_;
};

} // namespace brevant::gui
