#include "CompressionController.hpp"

#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "engine/cleanup/PutBack.hpp"
#include "engine/compression/CompressionJournal.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/support/PathNames.hpp"

namespace brevant::gui {

namespace {

// One line for what became of an original and of its copy.
QString putBackLine(const PutBackRequest::Result& result) {
    std::string name = PathNames::lastComponent(result.itemID);
    QString line = qtText(result.outcome.message(name));
    if (result.outcome.kind == RestoreOutcome::Kind::occupied ||
        result.outcome.kind == RestoreOutcome::Kind::failed) {
        line = qtText(name) + QStringLiteral(": ") + line;
    }
    if (result.companion) {
        line += QLatin1Char(' ') + qtText(*result.companion);
    }
    return line;
}

struct PutBackDone {
    QStringList lines;
    std::optional<CompressionReport> after;
};

PutBackDone putBackAllOf(const std::string& journalPath,
                         const std::shared_ptr<const Trasher>& trasher) {
    PutBackDone done;
    auto report = CompressionJournal::report(journalPath);
    if (!report) {
        done.lines << CompressionController::tr("This compression's journal cannot be read.");
        return done;
    }
    PutBackRequest batch{.journalPath = journalPath, .trasher = trasher};
    for (const auto& item : report->items) {
        if (item.outcome.kind == ItemOutcome::Kind::movedToTrash) {
            batch.requests.push_back({item.item.path, item.item.path});
        }
    }
    CancellationFlag never;
    auto results = PutBack<CompressionJournalKind>::restore(batch, never, {});
    if (!results) {
        done.lines << qtText(results.error());
    } else {
        for (const auto& result : *results) {
            done.lines << putBackLine(result);
        }
    }
    if (auto after = CompressionJournal::report(journalPath)) {
        done.after = std::move(*after);
    }
    return done;
}

} // namespace

CompressionController::CompressionController(PhotoCleanupModel& model, QObject* parent)
    : QObject(parent)
    , model_(model)
    // A run and a history read may overlap.
    , worker_(*this, 2) {}

CompressionController::~CompressionController() = default;

void CompressionController::setTrasher(std::shared_ptr<const Trasher> trasher) {
    trasher_ = std::move(trasher);
}

void CompressionController::setOptions(Compressor::Options options) {
    options_ = std::move(options);
}

Compressor CompressionController::compressor() const {
    Compressor compressor(platform::DataFolder{model_.dataFolder()}, trasher_);
    compressor.setOptions(options_);
    return compressor;
}

bool CompressionController::find(std::int64_t minBytes) {
    // Looking again with another smallest size keeps the screen.
    bool open = model_.phase() == PhotoCleanupModel::Phase::compressing;
    if (running_ || (!open && !model_.beginCompressing())) {
        return false;
    }
    minBytes_ = minBytes;
    candidates_.reset();
    report_.reset();
    refusal_.clear();
    Q_EMIT searching();
    CompressionRequest request{.folders = model_.settings().sources, .minBytes = minBytes};
    cancel_ = worker_.run(
        [request](const CancellationFlag& cancel) {
            return CompressionFinder::find(request, cancel);
        },
        [this](CompressionCandidates found) {
            candidates_ = std::move(found);
            Q_EMIT candidatesFound();
        });
    return true;
}

bool CompressionController::start() {
    if (running_ || !candidates_ || candidates_->plan.items.empty()) {
        return false;
    }
    running_ = true;
    Compressor runner = compressor();
    CompressionPlan plan = candidates_->plan;
    Q_EMIT runStarted();
    cancel_ = worker_.runReporting<CompressionProgress>(
        [runner, plan](const CancellationFlag& cancel, const auto& report) {
            return runner.run(plan, cancel, report);
        },
        [this](const CompressionProgress& progress) { Q_EMIT runProgress(progress); },
        [this](std::expected<CompressionReport, std::string> result) {
            running_ = false;
            if (result) {
                report_ = std::move(*result);
            } else {
                refusal_ = qtText(result.error());
            }
            Q_EMIT runFinished();
        },
        // Only the latest frame count of a file is worth drawing.
        [](const CompressionProgress& waiting, const CompressionProgress& newer) {
            return waiting.index == newer.index && !waiting.done;
        });
    return true;
}

void CompressionController::stopAfterThisOne() {
    if (cancel_) {
        cancel_->cancel();
    }
}

void CompressionController::close() {
    if (running_) {
        return;
    }
    stopAfterThisOne();
    model_.endCompressing();
}

void CompressionController::loadHistory() {
    std::string directory = platform::DataFolder{model_.dataFolder()}.compressions();
    worker_.run(
        [directory](const CancellationFlag&) { return CompressionJournal::history(directory); },
        [this](std::vector<CompressionReport> reports) {
            history_ = std::move(reports);
            Q_EMIT historyLoaded();
        });
}

void CompressionController::putBackAll(const std::string& journalPath) {
    worker_.run(
        [journalPath, trasher = trasher_](const CancellationFlag&) {
            return putBackAllOf(journalPath, trasher);
        },
        [this](const PutBackDone& done) { Q_EMIT putBackFinished(done.lines, done.after); });
}

} // namespace brevant::gui
