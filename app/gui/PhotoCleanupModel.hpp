#pragma once

#include "app/gui/CleanupSettings.hpp"
#include "app/gui/Worker.hpp"
#include "engine/cleanup/CleanupReport.hpp"
#include "engine/pipeline/PipelineProgress.hpp"
#include "engine/pipeline/ScanOutcome.hpp"
#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/review/LockStore.hpp"
#include "engine/review/ReviewSession.hpp"
#include "engine/review/SavedReview.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/GroupSummary.hpp"
#include "engine/scan/ScanResult.hpp"
#include "engine/similarity/SimilarityIndex.hpp"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <cstdint>
#include <expected>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

class QSettings;

namespace brevant::gui {

class ReviewSaver;

// Where a scan is, as the progress screen shows it.
using ModelProgress = PipelineProgress;

// The window's one model: the chosen sources, scope and mode, the settings,
// the phase, and the outcome of the last scan (its result, similarity index,
// groups and review session), all from the engine's scan pipeline. Engine
// work runs on a worker with a cancellation flag; progress and results come
// back to the interface thread, which never waits on disk or decoding.
class PhotoCleanupModel : public QObject {
    Q_OBJECT

public:
    using Scope = CleanupSettings::Scope;
    using Mode = CleanupSettings::Mode;

    // Only the model moves from one phase to the next.
    enum class Phase {
        // Nothing scanned yet, or back at the start.
        idle,
        scanning,
        // A result is there to review.
        reviewing,
        // A cleanup moves the marked copies to the Trash.
        cleaning,
        // A cleanup's report (or its refusal) is shown until the user is
        // done with it.
        finished,
        // Files get smaller copies, or the compression's report is shown
        // until the user is done with it.
        compressing,
    };

    // The engine operations a scan calls. Tests wrap them, for example to
    // count how often pictures are measured.
    using Engine = ScanPipeline::Steps;

    // Reads the settings from `store`; `dataFolder` is where Brevant keeps
    // its files (the feature cache among them).
    PhotoCleanupModel(QSettings& store, std::string dataFolder, const std::string& downloadFolder,
                      Engine engine = Engine::standard(), QObject* parent = nullptr);
    PhotoCleanupModel(const PhotoCleanupModel&) = delete;
    PhotoCleanupModel& operator=(const PhotoCleanupModel&) = delete;
    PhotoCleanupModel(PhotoCleanupModel&&) = delete;
    PhotoCleanupModel& operator=(PhotoCleanupModel&&) = delete;
    // Cancels whatever runs and waits for the worker to stop.
    ~PhotoCleanupModel() override;

    [[nodiscard]] const CleanupSettings& settings() const { return settings_; }

    [[nodiscard]] const std::string& dataFolder() const { return dataFolder_; }

    [[nodiscard]] std::string featureCachePath() const;
    [[nodiscard]] std::string lockStorePath() const;
    [[nodiscard]] std::string reviewsPath() const;

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
    // Remembers the catalog of a kind, and the folder it was found in as
    // the latest one looked in.
    void setCatalog(CatalogApplication application, const std::string& catalog,
                    const std::string& folder);

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
    // mode; false when one is running, a cleanup runs, or there is nothing
    // to scan.
    bool startScan();
    // There is something to scan, and no scan or cleanup runs.
    [[nodiscard]] bool canScan() const;
    // Asks the running scan to stop; it stops between files, and the model
    // goes back to idle when it has.
    void cancelScan();
    [[nodiscard]] bool isCancelling() const;
    // Leaves the result and goes back to the start, unless a scan or a
    // cleanup runs.
    void returnHome();

    [[nodiscard]] Phase phase() const { return phase_; }

    // To cleaning, as a cleanup of the marks starts; false without a result
    // or while a scan or another cleanup runs.
    bool beginCleaning();
    // From cleaning to finished: the cleanup's report or refusal is shown.
    void endCleaning();
    // To compressing, as the compression screen opens; false while a scan,
    // a cleanup or another compression has the window.
    bool beginCompressing();
    // The user is done with the compression: back to reviewing, or to idle
    // without a result.
    void endCompressing();
    // To finished for reports of cleanups a crash left unfinished, from
    // idle or reviewing; false in any other phase.
    bool showReports();
    // The user is done with the reports: back to reviewing, or to idle
    // without a result.
    void closeReports();

    [[nodiscard]] const ModelProgress& progress() const { return progress_; }

    [[nodiscard]] std::int64_t elapsedMilliseconds() const;

    // How long the last finished scan took, every pass of it.
    [[nodiscard]] std::int64_t scanMilliseconds() const { return scanMilliseconds_; }

    [[nodiscard]] const ScanResult& result() const;

    [[nodiscard]] bool hasResult() const { return hasResult_; }

    // The mode and preset the shown groups were made with.
    [[nodiscard]] Mode resultMode() const;
    [[nodiscard]] SimilarityPreset groupedPreset() const;

    // Absent for scans of identical copies.
    [[nodiscard]] std::shared_ptr<const SimilarityIndex> index() const;

    // What the scan learned of the catalog it read, as the command line
    // has it; absent for folders and without a result.
    [[nodiscard]] std::optional<CatalogSource::Facts> catalogFacts() const;

    // The groups of the result (CleanupGroups::reviewed), largest savings
    // first.
    [[nodiscard]] const std::vector<DuplicateGroup>& groups() const;

    // The marks, locks and keeper suggestions over the shown groups; null
    // until a scan has a result. A view keeps the session it shows: a
    // preset change or a rescan gives a new one, which carries the marks
    // still allowed over.
    [[nodiscard]] std::shared_ptr<ReviewSession> session() const;

    // The one lock store of the window, read from the data folder by the
    // first scan (locks are only needed once there are groups).
    [[nodiscard]] const std::shared_ptr<LockStore>& locks() const { return locks_; }

    // One entry per kind present, in the kinds' order.
    [[nodiscard]] std::vector<KindSummary> kinds() const;
    [[nodiscard]] std::int64_t bytesToFree() const;
    // Copies in all groups, counted in each group they are in.
    [[nodiscard]] int picturesInGroups() const;

    // After a cleanup: the copies its report has in the Trash leave the
    // groups, the session and the figures, without scanning again.
    void applyCleanup(const CleanupReport& report);
    // After a Put Back: the copies back at their own paths return.
    void applyPutBack(const std::vector<std::string>& returned);

    // How many copies a scan in another mode took over still marked from
    // the result before it (an identical scan's marks in a similar one); 0
    // when the modes were the same.
    [[nodiscard]] int marksFromOtherMode() const { return marksFromOtherMode_; }

    // Copies a cleanup has moved to the Trash since the scan that are not
    // back yet.
    [[nodiscard]] int copiesAway() const;

    // The user says the pictures of each decision are different photos
    // (DeclaredDifferences, recorded on the worker): then the groups are
    // those a rescan would show. False while no result is reviewed or with
    // no decision; a refusal comes back through declareRefused.
    bool declareNotDuplicates(std::vector<std::vector<std::string>> decisions);

    // Whoever changes marks or locks through session() (the review screen,
    // a cleanup) tells the model, so every view of the marks can follow.
    // The marks are saved as the review of the scanned folders.
    void noteMarksChanged() { Q_EMIT marksChanged(); }

    // The group was shown to the user: it counts as reviewed, in this scan
    // and, once saved with the marks, when the same folders are scanned again.
    void noteReviewed(const std::string& groupId);

    [[nodiscard]] const std::set<std::string>& reviewedGroups() const { return reviewed_; }

    // The review saved last, of any folders: its folders, mode and date (the
    // marks are the saver's to write); absent until read (lastReviewChanged)
    // or when there is none.
    [[nodiscard]] const std::optional<SavedReview>& lastReview() const { return lastReview_; }

    // Scans the last review's folders again in its mode and preset, taking its
    // marks back; false when there is none or no scan can start.
    bool resumeLastReview();
    // What the last scan took back from a saved review, in words; "" when
    // nothing.
    [[nodiscard]] QString resumedText() const;

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
    void lastReviewChanged();
    // The groups were formed again after a "not duplicates" decision.
    void notDuplicatesDeclared();
    void declareRefused(const QString& reason);

private:
    // What the settings ask a scan for now.
    [[nodiscard]] ScanRequest request() const;
    void save();
    void setPhase(Phase phase);
    void showProgress(const ModelProgress& progress);
    void finishScan(std::expected<ScanOutcome, std::string> outcome);
    void regroup();
    // Takes a new outcome, the marks of the one before carried over.
    void adopt(ScanOutcome outcome);
    // Frees a replaced outcome off the interface thread.
    void letGo(std::shared_ptr<const ScanOutcome> older);
    // Takes the marks and reviewed groups a slice at a time between events
    // and hands them to the saver, which writes them on a worker.
    void saveReview();
    void buildReviewSlice();

    QSettings& store_;
    std::map<Scope, std::string> catalogNotices_;
    // Only the latest search of a scope is taken.
    std::map<Scope, int> catalogSearches_;
    CleanupSettings settings_;
    std::string dataFolder_;
    ScanPipeline pipeline_;

    Phase phase_ = Phase::idle;
    std::shared_ptr<CancellationFlag> cancel_;
    ModelProgress progress_;
    QElapsedTimer clock_;
    std::int64_t scanMilliseconds_ = 0;

    // Null until a scan has a result. Kept, though no longer shown, through
    // a new scan, whose session takes over its marks.
    std::shared_ptr<const ScanOutcome> outcome_;
    bool hasResult_ = false;
    int marksFromOtherMode_ = 0;
    std::shared_ptr<LockStore> locks_;
    // Results of a regroup that is no longer the latest are dropped.
    int generation_ = 0;
    std::set<std::string> reviewed_;
    std::optional<SavedReview> lastReview_;
    std::shared_ptr<ReviewSaver> reviewSaver_;
    // Saves wait for a pause in the user's work: the saved review is taken
    // from every mark, which over a million pictures is felt.
    QTimer saveSoon_;
    // The review being taken, and the slices that take it.
    std::optional<SavedReviewBuilder> building_;
    QTimer buildSlice_;
    // Last, so that it stops before anything its tasks answer to goes.
    Worker worker_;
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
