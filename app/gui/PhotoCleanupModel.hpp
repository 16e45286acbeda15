#pragma once

#include "app/gui/CleanupSettings.hpp"
#include "engine/review/CleanupGroups.hpp"
#include "engine/review/LockStore.hpp"
#include "engine/review/ReviewSession.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanProgress.hpp"
#include "engine/scan/ScanResult.hpp"
#include "engine/similarity/SimilarityIndex.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"

#include <QElapsedTimer>
#include <QObject>
#include <QThreadPool>

#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QSettings;

namespace brevant {
class FeatureCache;
}

namespace brevant::gui {

// Where a scan is, as the progress screen shows it.
struct ModelProgress {
    ScanProgress scan;
    // Pictures done and to do, in the stages whose total is known
    // (measuring and checking faces).
    int done = 0;
    std::optional<int> total;

    friend bool operator==(const ModelProgress&, const ModelProgress&) = default;
};

// The groups of one kind in a result.
struct KindSummary {
    MatchKind kind = MatchKind::identical;
    int groups = 0;
    int pictures = 0;
    std::int64_t bytesToFree = 0;

    friend bool operator==(const KindSummary&, const KindSummary&) = default;
};

// The window's one model: the chosen sources, scope and mode, the phase, the
// current scan result with its similarity index and groups, and the
// settings. Every engine call runs on a worker thread with a cancellation
// flag; progress and results come back to the interface thread as queued
// calls, so the interface never waits on disk or decoding.
class PhotoCleanupModel : public QObject {
    Q_OBJECT

public:
    using Scope = CleanupSettings::Scope;
    using Mode = CleanupSettings::Mode;

    enum class Phase {
        idle,
        scanning,
        reviewing,
        cleaning,
        finished,
    };

    // The engine operations a scan calls. Tests wrap them, for example to
    // count how often pictures are measured.
    struct Engine {
        using Scan = std::function<ScanResult(const std::vector<std::string>& folders,
                                              bool keepPictures, const CancellationFlag& cancel,
                                              const ExactMatcher::Progress& progress)>;
        using Measure = std::function<std::optional<SimilarityIndex>(
            std::vector<PhotoAsset> pictures, FeatureCache* cache, const CancellationFlag& cancel,
            const SimilarityMatcher::Progress& progress)>;
        // A Lightroom Classic or Capture One catalog, read and scanned; the
        // reason as a sentence when the catalog cannot be read.
        using ScanCatalog = std::function<std::expected<ScanResult, std::string>(
            CleanupSettings::Scope scope, const std::string& catalog, bool keepPictures,
            const CancellationFlag& cancel, const ExactMatcher::Progress& progress)>;
        using CheckFaces = std::function<std::optional<SimilarityIndex>(
            const std::vector<DuplicateGroup>& groups, const SimilarityIndex& index,
            FeatureCache* cache, const CancellationFlag& cancel,
            const SimilarityMatcher::Progress& progress)>;

        Scan scan;
        ScanCatalog scanCatalog;
        Measure measure;
        CheckFaces checkFaces;

        [[nodiscard]] static Engine standard();
    };

    // Series: shots of one folder at most this many seconds apart.
    static constexpr double kSeriesWindow = CleanupGroups::kSeriesWindow;

    // Reads the settings from `store`; `dataFolder` is where Brevant keeps
    // its files (the feature cache among them).
    PhotoCleanupModel(QSettings& store, std::string dataFolder, const std::string& downloadFolder,
                      Engine engine = Engine::standard(), QObject* parent = nullptr);
    PhotoCleanupModel(const PhotoCleanupModel&) = delete;
    PhotoCleanupModel& operator=(const PhotoCleanupModel&) = delete;
    PhotoCleanupModel(PhotoCleanupModel&&) = delete;
    PhotoCleanupModel& operator=(PhotoCleanupModel&&) = delete;
    // Cancels whatever runs and waits for the workers to stop.
    ~PhotoCleanupModel() override;

    [[nodiscard]] const CleanupSettings& settings() const { return settings_; }

    [[nodiscard]] const std::string& dataFolder() const { return dataFolder_; }

    [[nodiscard]] std::string featureCachePath() const;
    [[nodiscard]] std::string lockStorePath() const;

    // Each change is saved at once.
    void addSource(const std::string& folder);
    void removeSource(const std::string& folder);
    void setSources(std::vector<std::string> folders);
    void setProtectedFolders(std::vector<std::string> folders);
    void setInboxFolders(std::vector<std::string> folders);
    void setPriorities(std::vector<KeeperPolicy::Priority> priorities);
    void setScope(Scope scope);
    void setMode(Mode mode);
    // Regroups the current result when it was a similar scan; never measures.
    void setPreset(SimilarityPreset preset);
    void setSkin(const std::string& skin);
    void setLightroomCatalog(const std::string& catalog, const std::string& folder);
    void setCaptureOneCatalog(const std::string& catalog, const std::string& folder);

    // Looks for the catalog of a catalog scope in `folder`, or where the
    // catalog's application keeps it when none is given, on a worker. The
    // most recently changed one is chosen and remembered; catalogChanged
    // tells when the search is over.
    void findCatalog(Scope scope, const std::optional<std::string>& folder);
    // The chosen catalog of a catalog scope ("" when none).
    [[nodiscard]] const std::string& catalog(Scope scope) const;
    // What the last search found worth saying: no catalog in the folder,
    // or several of which the newest is used.
    [[nodiscard]] const std::string& catalogNotice(Scope scope) const;
    // The folder searched when the user has chosen none.
    [[nodiscard]] static std::string defaultCatalogFolder(Scope scope);

    // Starts a scan of the sources (or the chosen catalog) in the chosen
    // mode; false when one is running or there is nothing to scan.
    bool startScan();
    // There is something to scan and no scan runs.
    [[nodiscard]] bool canScan() const;
    // Asks the running scan to stop; it stops between files, and the model
    // goes back to idle when it has.
    void cancelScan();
    [[nodiscard]] bool isCancelling() const;
    // Leaves the result and goes back to the start.
    void returnHome();

    [[nodiscard]] Phase phase() const { return phase_; }

    [[nodiscard]] const ModelProgress& progress() const { return progress_; }

    [[nodiscard]] std::int64_t elapsedMilliseconds() const;

    [[nodiscard]] const ScanResult& result() const { return result_; }

    [[nodiscard]] bool hasResult() const { return hasResult_; }

    // The mode and preset the shown groups were made with.
    [[nodiscard]] Mode resultMode() const { return resultMode_; }

    [[nodiscard]] SimilarityPreset groupedPreset() const { return groupedPreset_; }

    // Absent for scans of identical copies.
    [[nodiscard]] std::shared_ptr<const SimilarityIndex> index() const { return index_; }

    // The groups for the result's mode, largest savings first. In the
    // similar mode, identical groups none of whose members is in a similar
    // group stand beside the similar groups (a copy that could not be
    // measured is still a proven copy).
    [[nodiscard]] const std::vector<DuplicateGroup>& groups() const { return groups_; }

    // The marks, locks and keeper suggestions over the shown groups; null
    // until a scan has a result. A preset change gives a new session that
    // carries the marks still allowed over.
    [[nodiscard]] ReviewSession* session() { return hasResult_ ? session_.get() : nullptr; }

    [[nodiscard]] const ReviewSession* session() const {
        return hasResult_ ? session_.get() : nullptr;
    }

    // The one lock store of the window, read from the data folder by the
    // first scan (locks are only needed once there are groups).
    [[nodiscard]] const std::shared_ptr<LockStore>& locks() const { return locks_; }

    // One entry per kind present, in the kinds' order.
    [[nodiscard]] std::vector<KindSummary> kinds() const;
    [[nodiscard]] std::int64_t bytesToFree() const;

    // The groups a mode shows, from a scan's identical groups and its index.
    [[nodiscard]] static std::vector<DuplicateGroup>
    groupsFor(Mode mode, SimilarityPreset preset, const std::vector<DuplicateGroup>& identical,
              const SimilarityIndex* index);

    // Whoever changes marks or locks through session() (the review screen,
    // a cleanup) tells the model, so every view of the marks can follow.
    void noteMarksChanged() { Q_EMIT marksChanged(); }

Q_SIGNALS:
    // Marks or locks changed in the review (noteMarksChanged).
    void marksChanged();
    void settingsChanged();
    void phaseChanged(brevant::gui::PhotoCleanupModel::Phase phase);
    void progressChanged(const brevant::gui::ModelProgress& progress);
    // A new result, or new groups after a preset change.
    void resultChanged();
    void scanCancelled();
    // A scan that could not start its work, with the sentence why.
    void scanFailed(const QString& reason);
    void catalogChanged(brevant::gui::CleanupSettings::Scope scope);

private:
    struct Job;
    struct Outcome;
    class Mailbox;

    // The whole scan, on a worker thread.
    static void run(const Job& job, Outcome& outcome,
                    const std::function<void(const ModelProgress&)>& report);

    void save();
    void setPhase(Phase phase);
    // Worker side: hands progress to the interface thread.
    void post(const ModelProgress& progress);
    void deliverProgress();
    void finishScan(const std::shared_ptr<Outcome>& outcome);
    void regroup();

    QSettings& store_;
    std::map<Scope, std::string> catalogNotices_;
    // Only the latest search of a scope is taken.
    std::map<Scope, int> catalogSearches_;
    CleanupSettings settings_;
    std::string dataFolder_;
    Engine engine_;
    QThreadPool pool_;

    Phase phase_ = Phase::idle;
    std::shared_ptr<CancellationFlag> cancel_;
    std::shared_ptr<Mailbox> mailbox_;
    ModelProgress progress_;
    QElapsedTimer clock_;

    bool hasResult_ = false;
    ScanResult result_;
    Mode resultMode_ = Mode::identical;
    SimilarityPreset groupedPreset_ = SimilarityPreset::balanced;
    std::shared_ptr<const SimilarityIndex> index_;
    // Kept through a new scan, whose session takes over its marks.
    std::shared_ptr<ReviewSession> session_;
    std::shared_ptr<LockStore> locks_;
    std::vector<DuplicateGroup> groups_;
    // Results of a regroup that is no longer the latest are dropped.
    int generation_ = 0;
};

[[nodiscard]] std::string_view rawValue(PhotoCleanupModel::Phase phase);
void PrintTo(PhotoCleanupModel::Phase phase, std::ostream* os);

} // namespace brevant::gui

namespace brevant {

template <> struct EnumCases<gui::PhotoCleanupModel::Phase> {
    using Phase = gui::PhotoCleanupModel::Phase;
    static constexpr std::array kAll{Phase::idle, Phase::scanning, Phase::reviewing,
                                     Phase::cleaning, Phase::finished};
};

} // namespace brevant
