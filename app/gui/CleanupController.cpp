#include "CleanupController.hpp"

#include "app/gui/PhotoCleanupModel.hpp"
#include "engine/cleanup/CleanupExecutor.hpp"
#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/platform/DataFolder.hpp"

#include <algorithm>
#include <utility>

namespace brevant::gui {

namespace {

// The items of the report to try, in plan order: those asked for that the
// journal has in the Trash.
std::vector<PlannedRemoval> inTrash(const CleanupReport& report,
                                    const std::vector<std::string>& itemIDs) {
    std::vector<PlannedRemoval> removals;
    for (const auto& item : report.items) {
        if (item.outcome.kind == ItemOutcome::Kind::movedToTrash &&
            std::ranges::find(itemIDs, item.removal.path) != itemIDs.end()) {
            removals.push_back(item.removal);
        }
    }
    return removals;
}

// Puts `removals` back in one batch. A refused Put Back leaves every
// picture in the Trash, for the reason given.
std::vector<PutBackResult> putBackAll(const std::string& journalPath,
                                      std::vector<PlannedRemoval> removals, bool underAnotherName) {
    Restorer::Batch batch{.journalPath = journalPath};
    for (const auto& removal : removals) {
        batch.requests.push_back({removal.path, underAnotherName
                                                    ? Restorer::alternativePath(removal.path)
                                                    : removal.path});
    }
    CancellationFlag never;
    auto done = Restorer::restore(batch, never);
    std::vector<PutBackResult> results;
    for (auto& removal : removals) {
        RestoreOutcome outcome =
            done ? RestoreOutcome::notInTrash() : RestoreOutcome::failed(done.error());
        if (done) {
            auto result = std::ranges::find(*done, removal.path, &Restorer::Result::itemID);
            if (result != done->end()) {
                outcome = result->outcome;
            }
        }
        results.push_back({std::move(removal), std::move(outcome)});
    }
    return results;
}

// The pictures back at the paths they were moved from; those put back
// under another name are new to the results.
std::vector<std::string> returnedHome(const std::vector<PutBackResult>& results) {
    std::vector<std::string> paths;
    for (const auto& result : results) {
        if (result.outcome.kind == RestoreOutcome::Kind::restored &&
            result.outcome.path == result.removal.path) {
            paths.push_back(result.removal.path);
        }
    }
    return paths;
}

} // namespace

CleanupController::CleanupController(PhotoCleanupModel& model, QObject* parent)
    : QObject(parent)
    , model_(model)
    // A run, a Put Back and a history read may overlap; each writes its own
    // journal lines with its own handle.
    , worker_(*this, 2) {}

CleanupController::~CleanupController() = default;

std::string CleanupController::journalDirectory() const {
    return platform::DataFolder{model_.dataFolder()}.cleanups();
}

void CleanupController::setTrasher(std::shared_ptr<const Trasher> trasher) {
    trasher_ = std::move(trasher);
}

std::expected<CleanupPlan, PlanError> CleanupController::plan() const {
    std::shared_ptr<const ReviewSession> session = model_.session();
    if (session == nullptr) {
        return std::unexpected(PlanError::nothingMarked());
    }
    return CleanupPlanner::plan(*session);
}

bool CleanupController::start(const CleanupPlan& plan, const CleanupApproval& approval) {
    if (recovering_ || !model_.beginCleaning()) {
        return false;
    }
    handled_ = 0;
    plan_ = plan;
    CleanupExecutor executor(platform::DataFolder{model_.dataFolder()}, trasher_);
    int total = static_cast<int>(plan.removals.size());
    Q_EMIT runStarted();
    Q_EMIT runProgress(0, total);
    cancel_ = worker_.runReporting<int>(
        [executor, plan, approval](const CancellationFlag& cancel, const auto& report) {
            return executor.execute(plan, approval, cancel, report);
        },
        [this, total](int handled) {
            handled_ = handled;
            Q_EMIT runProgress(handled, total);
        },
        [this](std::expected<CleanupReport, ExecutionRefusal> result) {
            finishRun(std::move(result));
        },
        // Only the latest count is worth drawing.
        [](int, int) { return true; });
    return true;
}

bool CleanupController::isRunning() const {
    return model_.phase() == PhotoCleanupModel::Phase::cleaning;
}

void CleanupController::finishRun(std::expected<CleanupReport, ExecutionRefusal> result) {
    model_.endCleaning();
    if (!result) {
        Q_EMIT runRefused(QString::fromStdString(result.error().message()));
        return;
    }
    // What is in the Trash leaves the results; what stayed keeps its mark,
    // so the card can be opened again for it.
    model_.applyCleanup(*result);
    model_.noteMarksChanged();
    Q_EMIT runFinished(*result);
}

void CleanupController::stopAfterThisOne() {
    if (isRunning() && cancel_) {
        cancel_->cancel();
        Q_EMIT runProgress(handled_, total());
    }
}

bool CleanupController::isStopping() const {
    return isRunning() && cancel_ && cancel_->isCancelled();
}

std::string CleanupController::currentPath() const {
    if (!isRunning() || handled_ >= static_cast<int>(plan_.removals.size())) {
        return {};
    }
    return plan_.removals[static_cast<std::size_t>(handled_)].path;
}

void CleanupController::recoverInterruptedCleanups() {
    // A running cleanup's journal is unfinished too, and must not be
    // reconciled under it.
    if (isRunning() || recovering_) {
        return;
    }
    recovering_ = true;
    worker_.run(
        [directory = journalDirectory()](const CancellationFlag&) {
            return CleanupJournal::recoverInterrupted(directory);
        },
        [this](const std::vector<CleanupReport>& reports) {
            recovering_ = false;
            Q_EMIT interruptedRecovered(reports);
        });
}

void CleanupController::loadHistory() {
    worker_.run([directory = journalDirectory()](
                    const CancellationFlag&) { return CleanupJournal::history(directory); },
                [this](std::vector<CleanupReport> reports) {
                    history_ = std::move(reports);
                    Q_EMIT historyLoaded();
                });
}

void CleanupController::putBack(const std::string& journalPath, std::vector<std::string> itemIDs,
                                bool underAnotherName) {
    ++puttingBack_;

    struct PutBack {
        std::vector<PutBackResult> results;
        // The journal read back afterwards.
        std::optional<CleanupReport> after;
    };

    worker_.run(
        [journalPath, itemIDs = std::move(itemIDs), underAnotherName](const CancellationFlag&) {
            PutBack done;
            if (auto report = CleanupJournal::report(journalPath)) {
                done.results = putBackAll(journalPath, inTrash(*report, itemIDs), underAnotherName);
            }
            done.after = CleanupJournal::report(journalPath);
            return done;
        },
        [this](const PutBack& done) {
            --puttingBack_;
            model_.applyPutBack(returnedHome(done.results));
            Q_EMIT putBackFinished(done.after, done.results);
        });
}

} // namespace brevant::gui
