#pragma once

#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/PlanError.hpp"

#include <QDialog>
#include <QStringList>

#include <expected>

class QLabel;
class QPushButton;
class QTreeWidget;

namespace brevant::gui {

// "Review & Move to Trash…": what the plan will do before anything moves.
// Per group the copies that stay and the copies that go, the count and the
// bytes, and where the Trash is for each volume; or, when the marks cannot
// be planned, why. Confirming makes the approval of this plan alone.
class CleanupCard : public QDialog {
    Q_OBJECT

public:
    explicit CleanupCard(std::expected<CleanupPlan, PlanError> plan, QWidget* parent = nullptr);

    [[nodiscard]] bool hasPlan() const { return plan_.has_value(); }

    // Valid when hasPlan().
    [[nodiscard]] const CleanupPlan& plan() const { return *plan_; }

    // "2 pictures · 4.2 MB".
    [[nodiscard]] QString summary() const;

    // One line per volume: where its pictures go.
    [[nodiscard]] QStringList trashPlaces() const { return trashPlaces_; }

    // The PlanError's description, or "".
    [[nodiscard]] QString errorText() const;

    [[nodiscard]] QTreeWidget* groups() const { return groups_; }

    // Null when there is nothing to confirm.
    [[nodiscard]] QPushButton* confirmButton() const { return confirm_; }

    // The Trash folder an item from `path` goes to, as a line of the card.
    [[nodiscard]] static QString trashPlace(const PlannedRemoval& removal);

Q_SIGNALS:
    // The user confirmed: the approval of plan().
    void approved(const brevant::CleanupApproval& approval);

private:
    void showPlan();
    void showError();

    std::expected<CleanupPlan, PlanError> plan_;
    QLabel* summary_ = nullptr;
    QLabel* error_ = nullptr;
    QTreeWidget* groups_ = nullptr;
    QPushButton* confirm_ = nullptr;
    QStringList trashPlaces_;
};

} // namespace brevant::gui
