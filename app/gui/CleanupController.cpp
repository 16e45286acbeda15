#include "CleanupController.hpp"

#include "app/gui/PhotoCleanupModel.hpp"
#include "engine/cleanup/CleanupExecutor.hpp"
#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/platform/ThreadPriority.hpp"

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

} // namespace

CleanupController::CleanupController(PhotoCleanupModel& model, QObject* parent)
    : QObject(parent)
    , model_(model) {
    // A run, a Put Back and a history read may overlap; each writes its own
    // journal lines with its own handle.
    pool_.setMaxThreadCount(2);
}

CleanupController::~CleanupController() {
    if (cancel_) {
        cancel_->cancel();
    }
    pool_.waitForDone();
}

std::string CleanupController::journalDirectory() const {
    return platform::DataFolder{model_.dataFolder()}.cleanups();
}

void CleanupController::setTrasher(std::shared_ptr<const Trasher> trasher) {
    trasher_ = std::move(trasher);
}

std::expected<CleanupPlan, PlanError> CleanupController::plan() const {
    const ReviewSession* session = model_.session();
    if (session == nullptr) {
        return std::unexpected(PlanError::nothingMarked());
    }
    return CleanupPlanner::plan(*session);
}

bool CleanupController::start(const CleanupPlan& plan, const CleanupApproval& approval) {
    if (running_ || recovering_) {
        return false;
    }
    running_ = true;
    handled_ = 0;
    plan_ = plan;
    cancel_ = std::make_shared<CancellationFlag>();
    CleanupExecutor executor(platform::DataFolder{model_.dataFolder()}, trasher_);
    int total = static_cast<int>(plan.removals.size());
    Q_EMIT runStarted();
    Q_EMIT runProgress(0, total);
    pool_.start([this, executor, plan, approval, cancel = cancel_, total] {
        platform::runInBackground();
        auto progress = [this, total](int handled) {
            QMetaObject::invokeMethod(
                this,
                [this, handled, total] {
                    handled_ = handled;
                    Q_EMIT runProgress(handled, total);
                },
                Qt::QueuedConnection);
        };
        auto result = executor.execute(plan, approval, *cancel, progress);
        QMetaObject::invokeMethod(
            this, [this, result = std::move(result)] { finishRun(result); }, Qt::QueuedConnection);
    });
    return true;
}

void CleanupController::finishRun(std::expected<CleanupReport, ExecutionRefusal> result) {
    running_ = false;
    if (!result) {
        Q_EMIT runRefused(QString::fromStdString(result.error().message()));
        return;
    }
    // What is in the Trash is no longer to be marked; what stayed keeps its
    // mark, so the card can be opened again for it.
    if (ReviewSession* session = model_.session()) {
        for (const auto& item : result->items) {
            if (item.outcome.kind == ItemOutcome::Kind::movedToTrash) {
                session->unmark(item.removal.path);
            }
        }
        model_.noteMarksChanged();
    }
    Q_EMIT runFinished(*result);
}

void CleanupController::stopAfterThisOne() {
    if (running_ && cancel_) {
        cancel_->cancel();
        Q_EMIT runProgress(handled_, total());
    }
}

bool CleanupController::isStopping() const {
    return running_ && cancel_ && cancel_->isCancelled();
}

std::string CleanupController::currentPath() const {
    if (!running_ || handled_ >= static_cast<int>(plan_.removals.size())) {
        return {};
    }
    return plan_.removals[static_cast<std::size_t>(handled_)].path;
}

void CleanupController::recoverInterruptedCleanups() {
    // A running cleanup's journal is unfinished too, and must not be
    // reconciled under it.
    if (running_ || recovering_) {
        return;
    }
    recovering_ = true;
    pool_.start([this, directory = journalDirectory()] {
        platform::runInBackground();
        auto reports = CleanupJournal::recoverInterrupted(directory);
        QMetaObject::invokeMethod(
            this,
            [this, reports = std::move(reports)] {
                recovering_ = false;
                Q_EMIT interruptedRecovered(reports);
            },
            Qt::QueuedConnection);
    });
}

void CleanupController::loadHistory() {
    pool_.start([this, directory = journalDirectory()] {
        platform::runInBackground();
        auto reports = CleanupJournal::history(directory);
        QMetaObject::invokeMethod(
            this,
            [this, reports = std::move(reports)] {
                history_ = reports;
                Q_EMIT historyLoaded();
            },
            Qt::QueuedConnection);
    });
}

void CleanupController::putBack(const std::string& journalPath, std::vector<std::string> itemIDs,
                                bool underAnotherName) {
    ++puttingBack_;
    pool_.start([this, journalPath, itemIDs = std::move(itemIDs), underAnotherName] {
        platform::runInBackground();
        std::vector<PutBackResult> results;
        if (auto report = CleanupJournal::report(journalPath)) {
            auto removals = inTrash(*report, itemIDs);
            Restorer::Batch batch{.journalPath = journalPath};
            for (const auto& removal : removals) {
                batch.requests.push_back(
                    {removal.path,
                     underAnotherName ? Restorer::alternativePath(removal.path) : removal.path});
            }
            CancellationFlag never;
            auto done = Restorer::restore(batch, never);
            for (auto& removal : removals) {
                // A refused Put Back leaves every picture in the Trash, for
                // the reason given.
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
        }
        auto after = CleanupJournal::report(journalPath);
        QMetaObject::invokeMethod(
            this,
            [this, after = std::move(after), results = std::move(results)] {
                --puttingBack_;
                Q_EMIT putBackFinished(after, results);
            },
            Qt::QueuedConnection);
    });
}

} // namespace brevant::gui
