#include "PhotoCleanupModel.hpp"

#include "app/gui/QtText.hpp"
#include "engine/catalogs/CaptureOneCatalog.hpp"
#include "engine/catalogs/CaptureOneScanner.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/catalogs/LightroomScanner.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/platform/ThreadPriority.hpp"
#include "engine/review/CleanupGroups.hpp"
#include "engine/review/KeeperMeasures.hpp"
#include "engine/similarity/FeatureCache.hpp"
#include "engine/similarity/SimilarityThresholds.hpp"

#include <QSettings>

#include <algorithm>
#include <mutex>
#include <ostream>
#include <set>
#include <utility>

namespace brevant::gui {

using Stage = ScanProgress::Stage;

// Progress waiting for the interface thread. Reports of one stage replace
// each other, so a fast scan cannot flood the event queue; a new stage
// queues behind the last, so every stage reaches the screen.
class PhotoCleanupModel::Mailbox {
public:
    // True when the interface thread has to be woken for it.
    bool put(const ModelProgress& progress) {
        std::lock_guard lock(mutex_);
        if (!waiting_.empty() && waiting_.back().scan.stage == progress.scan.stage) {
            waiting_.back() = progress;
        } else {
            waiting_.push_back(progress);
        }
        return !std::exchange(woken_, true);
    }

    std::vector<ModelProgress> take() {
        std::lock_guard lock(mutex_);
        woken_ = false;
        return std::exchange(waiting_, {});
    }

private:
    std::mutex mutex_;
    std::vector<ModelProgress> waiting_;
    bool woken_ = false;
};

struct PhotoCleanupModel::Job {
    Scope scope = Scope::folders;
    std::vector<std::string> folders;
    std::string catalog;
    Mode mode = Mode::identical;
    SimilarityPreset preset = SimilarityPreset::balanced;
    std::string cachePath;
    Engine engine;
    std::shared_ptr<CancellationFlag> cancel;
    // Null until the first scan has read the lock store from this path.
    std::shared_ptr<LockStore> locks;
    std::string lockStorePath;
    CleanupSettings settings;
};

struct PhotoCleanupModel::Outcome {
    ScanResult result;
    std::shared_ptr<const SimilarityIndex> index;
    std::vector<DuplicateGroup> groups;
    Mode mode = Mode::identical;
    SimilarityPreset preset = SimilarityPreset::balanced;
    bool cancelled = false;
    // Why the scan could not run (an unreadable catalog).
    std::string failure;
    std::shared_ptr<ReviewSession> session;
    std::shared_ptr<LockStore> locks;
};

namespace {

using Report = std::function<void(const ModelProgress&)>;

std::shared_ptr<ReviewSession> makeSession(std::vector<DuplicateGroup> groups,
                                           std::shared_ptr<LockStore> locks,
                                           const CleanupSettings& settings,
                                           const SimilarityIndex* index) {
    std::set<std::string> protectedRoots(settings.protectedFolders.begin(),
                                         settings.protectedFolders.end());
    auto session = std::make_shared<ReviewSession>(
        std::move(groups), std::move(locks), std::move(protectedRoots), settings.inboxFolders);
    session->setPriorities(settings.priorities);
    if (index != nullptr) {
        session->setSimilarity(KeeperMeasures::from(*index));
    }
    return session;
}

// Measures the scan's pictures and reads faces; nothing when cancelled.
// Faces are read for every picture that has a close pair, which covers the
// members of any group under any preset and every series, so a later preset
// change needs no new reading.
std::optional<SimilarityIndex> measure(const ScanResult& result, ScanProgress last,
                                       const PhotoCleanupModel::Engine& engine,
                                       const std::string& cachePath, const CancellationFlag& cancel,
                                       const Report& report) {
    FeatureCache cache(cachePath);
    int total = static_cast<int>(result.pictures.size());
    last.stage = Stage::measuring;
    report({last, 0, total});
    auto index = engine.measure(result.pictures, &cache, cancel,
                                [&](int done) { report({last, done, total}); });
    if (!index || cancel.isCancelled()) {
        return std::nullopt;
    }
    // The matcher reports from one thread only, so the last pictures may
    // finish unreported.
    report({last, total, total});
    std::vector<int> paired = index->paired();
    if (paired.empty()) {
        return index;
    }
    DuplicateGroup holder;
    for (int picture : paired) {
        holder.members.push_back(index->pictures[picture]);
    }
    total = static_cast<int>(holder.members.size());
    last.stage = Stage::checkingFaces;
    report({last, 0, total});
    auto withFaces = engine.checkFaces({holder}, *index, &cache, cancel,
                                       [&](int done) { report({last, done, total}); });
    if (withFaces) {
        report({last, total, total});
    }
    return withFaces;
}

} // namespace

PhotoCleanupModel::Engine PhotoCleanupModel::Engine::standard() {
    Engine engine;
    engine.scan = [](const std::vector<std::string>& folders, bool keepPictures,
                     const CancellationFlag& cancel, const ExactMatcher::Progress& progress) {
        return ExactMatcher::scan(folders, keepPictures, std::nullopt, cancel, progress);
    };
    // Linux has no feature print yet, so none is asked for.
    engine.measure = [](std::vector<PhotoAsset> pictures, FeatureCache* cache,
                        const CancellationFlag& cancel,
                        const SimilarityMatcher::Progress& progress) {
        return SimilarityMatcher::index(std::move(pictures), cache, false, cancel, progress);
    };
    engine.scanCatalog =
        [](Scope scope, const std::string& path, bool keepPictures, const CancellationFlag& cancel,
           const ExactMatcher::Progress& progress) -> std::expected<ScanResult, std::string> {
        if (scope == Scope::captureOne) {
            auto catalog = CaptureOneCatalog::read(path);
            if (!catalog) {
                return std::unexpected(catalog.error().text());
            }
            return CaptureOneScanner::scan(*catalog, keepPictures, cancel, progress);
        }
        auto catalog = LightroomCatalog::read(path);
        if (!catalog) {
            return std::unexpected(catalog.error().text());
        }
        return LightroomScanner::scan(*catalog, keepPictures, cancel, progress);
    };
    engine.checkFaces = [](const std::vector<DuplicateGroup>& groups, const SimilarityIndex& index,
                           FeatureCache* cache, const CancellationFlag& cancel,
                           const SimilarityMatcher::Progress& progress) {
        return SimilarityMatcher::checkFaces(groups, index, cache, cancel, progress);
    };
    return engine;
}

PhotoCleanupModel::PhotoCleanupModel(QSettings& store, std::string dataFolder,
                                     const std::string& downloadFolder, Engine engine,
                                     QObject* parent)
    : QObject(parent)
    , store_(store)
    , settings_(CleanupSettings::load(store, downloadFolder))
    , dataFolder_(std::move(dataFolder))
    , engine_(std::move(engine))
    , mailbox_(std::make_shared<Mailbox>()) {
    // A scan and a regroup may overlap; the engine runs its own workers.
    pool_.setMaxThreadCount(2);
}

PhotoCleanupModel::~PhotoCleanupModel() {
    if (cancel_) {
        cancel_->cancel();
    }
    pool_.waitForDone();
}

std::string PhotoCleanupModel::featureCachePath() const {
    return platform::DataFolder{dataFolder_}.featureCache();
}

std::string PhotoCleanupModel::lockStorePath() const {
    return platform::DataFolder{dataFolder_}.lockStore();
}

void PhotoCleanupModel::save() {
    settings_.save(store_);
    Q_EMIT settingsChanged();
}

void PhotoCleanupModel::addSource(const std::string& folder) {
    if (folder.empty() || std::ranges::find(settings_.sources, folder) != settings_.sources.end()) {
        return;
    }
    settings_.sources.push_back(folder);
    save();
}

void PhotoCleanupModel::removeSource(const std::string& folder) {
    if (std::erase(settings_.sources, folder) > 0) {
        save();
    }
}

void PhotoCleanupModel::setSources(std::vector<std::string> folders) {
    settings_.sources = std::move(folders);
    save();
}

void PhotoCleanupModel::setProtectedFolders(std::vector<std::string> folders) {
    settings_.protectedFolders = std::move(folders);
    if (session_) {
        session_->setProtectedRoots(
            {settings_.protectedFolders.begin(), settings_.protectedFolders.end()});
    }
    save();
}

void PhotoCleanupModel::setInboxFolders(std::vector<std::string> folders) {
    settings_.inboxFolders = std::move(folders);
    if (session_) {
        session_->setInboxFolders(settings_.inboxFolders);
    }
    save();
}

void PhotoCleanupModel::setPriorities(std::vector<KeeperPolicy::Priority> priorities) {
    settings_.priorities = std::move(priorities);
    if (session_) {
        session_->setPriorities(settings_.priorities);
    }
    save();
}

void PhotoCleanupModel::setScope(Scope scope) {
    settings_.scope = scope;
    save();
}

void PhotoCleanupModel::setMode(Mode mode) {
    settings_.mode = mode;
    save();
}

void PhotoCleanupModel::setPreset(SimilarityPreset preset) {
    settings_.preset = preset;
    save();
    if (hasResult_ && resultMode_ == Mode::similar && preset != groupedPreset_) {
        regroup();
    }
}

void PhotoCleanupModel::setSkin(const std::string& skin) {
    settings_.skin = skin;
    save();
}

void PhotoCleanupModel::setLightroomCatalog(const std::string& catalog, const std::string& folder) {
    settings_.lightroomCatalog = catalog;
    std::erase(settings_.lightroomFolders, folder);
    settings_.lightroomFolders.insert(settings_.lightroomFolders.begin(), folder);
    save();
}

void PhotoCleanupModel::setCaptureOneCatalog(const std::string& catalog,
                                             const std::string& folder) {
    settings_.captureOneCatalog = catalog;
    std::erase(settings_.captureOneFolders, folder);
    settings_.captureOneFolders.insert(settings_.captureOneFolders.begin(), folder);
    save();
}

const std::string& PhotoCleanupModel::catalog(Scope scope) const {
    static const std::string none;
    switch (scope) {
    case Scope::folders:
        return none;
    case Scope::lightroom:
        return settings_.lightroomCatalog;
    case Scope::captureOne:
        return settings_.captureOneCatalog;
    }
    return none;
}

const std::string& PhotoCleanupModel::catalogNotice(Scope scope) const {
    static const std::string none;
    auto found = catalogNotices_.find(scope);
    return found == catalogNotices_.end() ? none : found->second;
}

std::string PhotoCleanupModel::defaultCatalogFolder(Scope scope) {
    // Where LightroomCatalog::defaultCatalogs and CaptureOneCatalog's look.
    switch (scope) {
    case Scope::folders:
        return {};
    case Scope::lightroom:
        return platform::homeFolder() + "/Pictures/Lightroom";
    case Scope::captureOne:
        return platform::homeFolder() + "/Pictures";
    }
    return {};
}

void PhotoCleanupModel::findCatalog(Scope scope, const std::optional<std::string>& folder) {
    if (scope == Scope::folders) {
        return;
    }
    std::string searched = folder.value_or(defaultCatalogFolder(scope));
    int search = ++catalogSearches_[scope];
    pool_.start([this, scope, searched, search] {
        platform::runInBackground();
        auto choice = std::make_shared<CatalogChoice>(scope == Scope::lightroom
                                                          ? LightroomCatalog::choose(searched)
                                                          : CaptureOneCatalog::choose(searched));
        QMetaObject::invokeMethod(
            this,
            [this, scope, searched, search, choice] {
                if (search != catalogSearches_[scope]) {
                    return;
                }
                catalogNotices_[scope] = choice->notice.value_or(std::string());
                if (choice->catalog && scope == Scope::lightroom) {
                    setLightroomCatalog(*choice->catalog, searched);
                } else if (choice->catalog) {
                    setCaptureOneCatalog(*choice->catalog, searched);
                }
                Q_EMIT catalogChanged(scope);
            },
            Qt::QueuedConnection);
    });
}

bool PhotoCleanupModel::canScan() const {
    if (phase_ == Phase::scanning) {
        return false;
    }
    if (settings_.scope == Scope::folders) {
        return !settings_.sources.empty();
    }
    return !catalog(settings_.scope).empty();
}

bool PhotoCleanupModel::startScan() {
    if (!canScan()) {
        return false;
    }
    hasResult_ = false;
    result_ = {};
    index_.reset();
    groups_.clear();
    ++generation_;
    Q_EMIT resultChanged();

    cancel_ = std::make_shared<CancellationFlag>();
    progress_ = {};
    clock_.start();
    setPhase(Phase::scanning);

    auto job = std::make_shared<Job>(Job{.scope = settings_.scope,
                                         .folders = settings_.sources,
                                         .catalog = catalog(settings_.scope),
                                         .mode = settings_.mode,
                                         .preset = settings_.preset,
                                         .cachePath = featureCachePath(),
                                         .engine = engine_,
                                         .cancel = cancel_,
                                         .locks = locks_,
                                         .lockStorePath = lockStorePath(),
                                         .settings = settings_});
    pool_.start([this, job] {
        platform::runInBackground();
        auto outcome = std::make_shared<Outcome>();
        run(*job, *outcome, [this](const ModelProgress& progress) { post(progress); });
        QMetaObject::invokeMethod(
            this, [this, outcome] { finishScan(outcome); }, Qt::QueuedConnection);
    });
    return true;
}

void PhotoCleanupModel::run(const Job& job, Outcome& outcome, const Report& report) {
    outcome.mode = job.mode;
    outcome.preset = job.preset;
    bool measuring = job.mode != Mode::identical;
    const CancellationFlag& cancel = *job.cancel;
    ScanProgress last;
    auto progress = [&](const ScanProgress& now) {
        last = now;
        // The matcher's end is not the end of a scan that measures next.
        if (!measuring || now.stage != Stage::finishing) {
            report({now, 0, std::nullopt});
        }
    };
    if (job.scope == Scope::folders) {
        outcome.result = job.engine.scan(job.folders, measuring, cancel, progress);
    } else {
        auto scanned = job.engine.scanCatalog(job.scope, job.catalog, measuring, cancel, progress);
        if (!scanned) {
            outcome.failure = std::move(scanned.error());
            return;
        }
        outcome.result = std::move(*scanned);
    }
    outcome.cancelled = outcome.result.cancelled || cancel.isCancelled();
    if (measuring && !outcome.cancelled) {
        auto index = measure(outcome.result, last, job.engine, job.cachePath, cancel, report);
        outcome.cancelled = !index.has_value();
        if (index) {
            outcome.index = std::make_shared<const SimilarityIndex>(std::move(*index));
            last.stage = Stage::finishing;
            report({last, 0, std::nullopt});
        }
    }
    if (outcome.cancelled) {
        return;
    }
    outcome.groups = groupsFor(job.mode, job.preset, outcome.result.groups, outcome.index.get());
    outcome.locks = job.locks ? job.locks : std::make_shared<LockStore>(job.lockStorePath);
    outcome.session = makeSession(outcome.groups, outcome.locks, job.settings, outcome.index.get());
}

void PhotoCleanupModel::cancelScan() {
    if (phase_ == Phase::scanning && cancel_ && !cancel_->isCancelled()) {
        cancel_->cancel();
        Q_EMIT progressChanged(progress_);
    }
}

bool PhotoCleanupModel::isCancelling() const {
    return phase_ == Phase::scanning && cancel_ && cancel_->isCancelled();
}

void PhotoCleanupModel::returnHome() {
    if (phase_ != Phase::scanning) {
        setPhase(Phase::idle);
    }
}

std::int64_t PhotoCleanupModel::elapsedMilliseconds() const {
    return clock_.isValid() ? clock_.elapsed() : 0;
}

void PhotoCleanupModel::setPhase(Phase phase) {
    if (phase_ == phase) {
        return;
    }
    phase_ = phase;
    Q_EMIT phaseChanged(phase);
}

void PhotoCleanupModel::post(const ModelProgress& progress) {
    if (mailbox_->put(progress)) {
        QMetaObject::invokeMethod(this, [this] { deliverProgress(); }, Qt::QueuedConnection);
    }
}

void PhotoCleanupModel::deliverProgress() {
    for (const auto& progress : mailbox_->take()) {
        if (phase_ != Phase::scanning) {
            return;
        }
        progress_ = progress;
        Q_EMIT progressChanged(progress_);
    }
}

void PhotoCleanupModel::finishScan(const std::shared_ptr<Outcome>& outcome) {
    // Progress still in the mailbox belongs to this scan; show it first.
    deliverProgress();
    cancel_.reset();
    if (!outcome->failure.empty()) {
        setPhase(Phase::idle);
        Q_EMIT scanFailed(qtText(outcome->failure));
        return;
    }
    if (outcome->cancelled) {
        setPhase(Phase::idle);
        Q_EMIT scanCancelled();
        return;
    }
    result_ = std::move(outcome->result);
    index_ = std::move(outcome->index);
    groups_ = std::move(outcome->groups);
    locks_ = std::move(outcome->locks);
    auto older = std::exchange(session_, std::move(outcome->session));
    // A rescan keeps the marks that are still allowed.
    if (older) {
        session_->carryMarks(*older);
    }
    resultMode_ = outcome->mode;
    groupedPreset_ = outcome->preset;
    hasResult_ = true;
    ++generation_;
    Q_EMIT resultChanged();
    setPhase(Phase::reviewing);
    // The preset may have changed while the scan ran.
    if (resultMode_ == Mode::similar && settings_.preset != groupedPreset_) {
        regroup();
    }
}

void PhotoCleanupModel::regroup() {
    int generation = ++generation_;
    auto identical = std::make_shared<const std::vector<DuplicateGroup>>(result_.groups);
    pool_.start(
        [this, generation, identical, index = index_, locks = locks_, settings = settings_] {
            platform::runInBackground();
            auto groups = std::make_shared<std::vector<DuplicateGroup>>(
                groupsFor(Mode::similar, settings.preset, *identical, index.get()));
            auto session = makeSession(*groups, locks, settings, index.get());
            QMetaObject::invokeMethod(
                this,
                [this, generation, preset = settings.preset, groups, session] {
                    if (generation != generation_) {
                        return;
                    }
                    groups_ = std::move(*groups);
                    groupedPreset_ = preset;
                    // The marks as they are now, not as when the regroup began.
                    if (session_) {
                        session->carryMarks(*session_);
                    }
                    session_ = session;
                    Q_EMIT resultChanged();
                },
                Qt::QueuedConnection);
        });
}

std::vector<DuplicateGroup>
PhotoCleanupModel::groupsFor(Mode mode, SimilarityPreset preset,
                             const std::vector<DuplicateGroup>& identical,
                             const SimilarityIndex* index) {
    if (mode == Mode::identical || index == nullptr) {
        return identical;
    }
    if (mode == Mode::series) {
        return index->series(CleanupGroups::kSeriesWindow, SimilarityThresholds::kSeriesRelated);
    }
    return CleanupGroups::withIdentical(index->groups(preset), identical);
}

std::vector<KindSummary> PhotoCleanupModel::kinds() const {
    std::vector<KindSummary> summaries;
    for (MatchKind kind : EnumCases<MatchKind>::kAll) {
        KindSummary summary{.kind = kind};
        for (const auto& group : groups_) {
            if (group.kind == kind) {
                ++summary.groups;
                summary.pictures += static_cast<int>(group.members.size());
                summary.bytesToFree += group.extraBytes();
            }
        }
        if (summary.groups > 0) {
            summaries.push_back(summary);
        }
    }
    return summaries;
}

std::int64_t PhotoCleanupModel::bytesToFree() const {
    std::int64_t total = 0;
    for (const auto& group : groups_) {
        total += group.extraBytes();
    }
    return total;
}

std::string_view rawValue(PhotoCleanupModel::Phase phase) {
    using Phase = PhotoCleanupModel::Phase;
    switch (phase) {
    case Phase::idle:
        return "idle";
    case Phase::scanning:
        return "scanning";
    case Phase::reviewing:
        return "reviewing";
    case Phase::cleaning:
        return "cleaning";
    case Phase::finished:
        return "finished";
    }
    return "idle";
}

void PrintTo(PhotoCleanupModel::Phase phase, std::ostream* os) {
    *os << rawValue(phase);
}

} // namespace brevant::gui
