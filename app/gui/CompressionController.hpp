#pragma once

#include "app/gui/Worker.hpp"
#include "engine/cleanup/Trasher.hpp"
#include "engine/compression/CompressionFinder.hpp"
#include "engine/compression/CompressionReport.hpp"
#include "engine/compression/Compressor.hpp"

#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevant::gui {

class PhotoCleanupModel;

// The window's side of compression: looks for the files worth a smaller
// copy in the chosen folders, runs the approved plan on a worker with "Stop
// After This One", and reads the earlier compressions for the history. The
// model's phase is compressing from the moment the candidates are looked
// for until the user is done with the report.
class CompressionController : public QObject {
    Q_OBJECT

public:
    explicit CompressionController(PhotoCleanupModel& model, QObject* parent = nullptr);
    ~CompressionController() override;
    CompressionController(const CompressionController&) = delete;
    CompressionController& operator=(const CompressionController&) = delete;
    CompressionController(CompressionController&&) = delete;
    CompressionController& operator=(CompressionController&&) = delete;

    // Tests stand in for the Trash.
    void setTrasher(std::shared_ptr<const Trasher> trasher);
    // Tests make video copies faster.
    void setOptions(Compressor::Options options);

    // Looks in the model's folders (photos and videos of at least
    // `minBytes`), or again with another size while its screen is open;
    // false when the window is busy.
    bool find(std::int64_t minBytes = CompressionRequest::kDefaultMinBytes);
    // Runs the plan found; false when there is none or a run is going.
    bool start();
    // The file in hand is finished, the rest are left.
    void stopAfterThisOne();
    // The user is done: back to where the window was.
    void close();
    void loadHistory();
    // Puts back every original of the compression journalled at
    // `journalPath` that is still in the Trash, moving its copy to the
    // Trash; refused at once while another run changes pictures.
    void putBackAll(const std::string& journalPath);

    [[nodiscard]] bool isRunning() const { return running_; }

    // The smallest size the last search considered.
    [[nodiscard]] std::int64_t minBytes() const { return minBytes_; }

    [[nodiscard]] const std::optional<CompressionCandidates>& candidates() const {
        return candidates_;
    }

    [[nodiscard]] const std::optional<CompressionReport>& report() const { return report_; }

    // Why the run was refused as a whole ("" when it was not).
    [[nodiscard]] const QString& refusal() const { return refusal_; }

    [[nodiscard]] const std::vector<CompressionReport>& history() const { return history_; }

    // Until the worker has answered everything (tests, screenshots).
    void waitForDone() { worker_.waitForDone(); }

Q_SIGNALS:
    void searching();
    void candidatesFound();
    void runStarted();
    void runProgress(const brevant::CompressionProgress& progress);
    void runFinished();
    void historyLoaded();
    // What became of each original, one line each, and the compression as
    // its journal tells it afterwards.
    void putBackFinished(const QStringList& lines,
                         const std::optional<brevant::CompressionReport>& after);

private:
    [[nodiscard]] Compressor compressor() const;

    PhotoCleanupModel& model_;
    Worker worker_;
    std::shared_ptr<const Trasher> trasher_;
    Compressor::Options options_;
    std::shared_ptr<CancellationFlag> cancel_;
    std::optional<CompressionCandidates> candidates_;
    std::optional<CompressionReport> report_;
    QString refusal_;
    std::vector<CompressionReport> history_;
    std::int64_t minBytes_ = CompressionRequest::kDefaultMinBytes;
    bool running_ = false;
};

} // namespace brevant::gui
