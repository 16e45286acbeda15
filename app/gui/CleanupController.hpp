#pragma once

#include "app/gui/Worker.hpp"
#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/CleanupReport.hpp"
#include "engine/cleanup/ExecutionRefusal.hpp"
#include "engine/cleanup/PlanError.hpp"
#include "engine/cleanup/RestoreOutcome.hpp"
#include "engine/cleanup/Trasher.hpp"
#include "engine/scan/CancellationFlag.hpp"

#include <QObject>
#include <QString>

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevant::gui {

class PhotoCleanupModel;

// One picture of a Put Back and what became of it.
struct PutBackResult {
    PlannedRemoval removal;
    RestoreOutcome outcome;
};

// The window's side of folder cleanups: plans the model's marks, runs an
// approved plan on a worker, reconciles cleanups a crash left unfinished,
// reads the history and puts pictures back. Every report shown comes from
// a journal; every disk access runs on a worker, and the results arrive on
// the interface thread as signals.
class CleanupController : public QObject {
    Q_OBJECT

public:
    explicit CleanupController(PhotoCleanupModel& model, QObject* parent = nullptr);
    CleanupController(const CleanupController&) = delete;
    CleanupController& operator=(const CleanupController&) = delete;
    CleanupController(CleanupController&&) = delete;
    CleanupController& operator=(CleanupController&&) = delete;
    // Stops a run after its current picture and waits for the workers.
    ~CleanupController() override;

    // The "Cleanups" folder of the model's data folder.
    [[nodiscard]] std::string journalDirectory() const;

    // Tests stand in for the freedesktop.org Trash; null restores it.
    void setTrasher(std::shared_ptr<const Trasher> trasher);

    // The plan of the current marks, or why there is none. Planning reads
    // nothing from disk.
    [[nodiscard]] std::expected<CleanupPlan, PlanError> plan() const;

    // Runs the approved plan on a worker, the model in its cleaning phase
    // until the run ends; false while a scan or another run is under way.
    bool start(const CleanupPlan& plan, const CleanupApproval& approval);
    // Sets the cancellation flag: the picture in progress finishes, the
    // rest stay where they are.
    void stopAfterThisOne();

    // The model is in its cleaning phase.
    [[nodiscard]] bool isRunning() const;

    [[nodiscard]] bool isStopping() const;

    // Pictures handled so far by the run, and planned in all.
    [[nodiscard]] int handled() const { return handled_; }

    [[nodiscard]] int total() const {
        return isRunning() ? static_cast<int>(plan_.removals.size()) : 0;
    }

    // The picture the run works on now; empty when none.
    [[nodiscard]] std::string currentPath() const;

    // Reconciles the journals a crash left without a finished entry.
    void recoverInterruptedCleanups();
    // Reads every journal again, newest first.
    void loadHistory();

    [[nodiscard]] const std::vector<CleanupReport>& history() const { return history_; }

    // Puts the given items of the cleanup back where they were, or under a
    // free name beside it. Only pictures the journal has in the Trash are
    // tried.
    void putBack(const std::string& journalPath, std::vector<std::string> itemIDs,
                 bool underAnotherName);

    [[nodiscard]] bool isPuttingBack() const { return puttingBack_ > 0; }

    [[nodiscard]] bool isRecovering() const { return recovering_; }

Q_SIGNALS:
    void runStarted();
    void runProgress(int handled, int total);
    void runFinished(const brevant::CleanupReport& report);
    // The plan was refused before anything moved.
    void runRefused(const QString& message);
    void interruptedRecovered(const std::vector<brevant::CleanupReport>& reports);
    void historyLoaded();
    // The journal read back after the Put Back, with each item's outcome.
    void putBackFinished(const std::optional<brevant::CleanupReport>& report,
                         const std::vector<brevant::gui::PutBackResult>& results);

private:
    void finishRun(std::expected<CleanupReport, ExecutionRefusal> result);

    PhotoCleanupModel& model_;
    std::shared_ptr<const Trasher> trasher_;
    int handled_ = 0;
    CleanupPlan plan_;
    std::shared_ptr<CancellationFlag> cancel_;
    std::vector<CleanupReport> history_;
    int puttingBack_ = 0;
    bool recovering_ = false;
    // Last: a run under way stops after its current picture, and is waited
    // for, before anything else goes.
    Worker worker_;
};

} // namespace brevant::gui
