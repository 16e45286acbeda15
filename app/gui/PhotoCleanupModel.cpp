#include "PhotoCleanupModel.hpp"

#include "app/gui/QtText.hpp"
#include "app/gui/ReviewSaver.hpp"
#include "engine/catalogs/CatalogSource.hpp"
#include "engine/pipeline/DeclaredDifferences.hpp"
#include "engine/platform/BufferReuse.hpp"
#include "engine/platform/DataFolder.hpp"

#include <QSettings>

#include <algorithm>
#include <ostream>
#include <set>
#include <utility>

namespace brevant::gui {

namespace {

const ScanResult kNoResult;
const std::vector<DuplicateGroup> kNoGroups;

} // namespace

PhotoCleanupModel::PhotoCleanupModel(QSettings& store, std::string dataFolder,
                                     const std::string& downloadFolder, Engine engine,
                                     QObject* parent)
    : QObject(parent)
    , store_(store)
    , settings_(CleanupSettings::load(store, downloadFolder))
    , dataFolder_(std::move(dataFolder))
    , pipeline_(std::move(engine))
    // A scan and a regroup may overlap; the engine runs its own workers.
    , reviewSaver_(std::make_shared<ReviewSaver>(reviewsPath()))
    , worker_(*this, 2) {
    // Results are let go of on a worker (letGo); this keeps the freed blocks
    // from being gathered later on the interface thread.
    platform::BufferReuse::keepFreedBuffers();
    saveSoon_.setSingleShot(true);
    saveSoon_.setInterval(1000);
    connect(&saveSoon_, &QTimer::timeout, this, &PhotoCleanupModel::saveReview);
    connect(this, &PhotoCleanupModel::marksChanged, &saveSoon_, qOverload<>(&QTimer::start));
    buildSlice_.setSingleShot(true);
    buildSlice_.setInterval(0);
    connect(&buildSlice_, &QTimer::timeout, this, &PhotoCleanupModel::buildReviewSlice);
    worker_.run([saver = reviewSaver_](const CancellationFlag&) { return saver->latest(); },
                [this](std::optional<SavedReview> latest) {
                    // A review saved since is newer than the file was.
                    if (!lastReview_ && latest) {
                        lastReview_ = std::move(latest);
                        Q_EMIT lastReviewChanged();
                    }
                });
}

PhotoCleanupModel::~PhotoCleanupModel() {
    // A save still waiting for its pause or for a worker would be dropped
    // with it.
    if ((saveSoon_.isActive() || building_) && outcome_) {
        if (auto review = ScanPipeline::reviewToSave(*outcome_, reviewed_, Date::now())) {
            reviewSaver_->offer(std::move(*review));
        }
    }
    reviewSaver_->write();
}

std::string PhotoCleanupModel::featureCachePath() const {
    return platform::DataFolder{dataFolder_}.featureCache();
}

std::string PhotoCleanupModel::lockStorePath() const {
    return platform::DataFolder{dataFolder_}.lockStore();
}

std::string PhotoCleanupModel::reviewsPath() const {
    return platform::DataFolder{dataFolder_}.reviews();
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
    if (outcome_ && outcome_->session) {
        outcome_->session->setProtectedRoots(
            {settings_.protectedFolders.begin(), settings_.protectedFolders.end()});
    }
    save();
}

void PhotoCleanupModel::setInboxFolders(std::vector<std::string> folders) {
    settings_.inboxFolders = std::move(folders);
    if (outcome_ && outcome_->session) {
        outcome_->session->setInboxFolders(settings_.inboxFolders);
    }
    save();
}

void PhotoCleanupModel::setPriorities(std::vector<KeeperPolicy::Priority> priorities) {
    settings_.priorities = std::move(priorities);
    if (outcome_ && outcome_->session) {
        outcome_->session->setPriorities(settings_.priorities);
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
    if (hasResult_ && resultMode() == Mode::similar && preset != groupedPreset()) {
        regroup();
    }
}

void PhotoCleanupModel::setSkin(const std::string& skin) {
    settings_.skin = skin;
    save();
}

void PhotoCleanupModel::setCatalog(CatalogApplication application, const std::string& catalog,
                                   const std::string& folder) {
    settings_.catalogs[application] = catalog;
    auto& folders = settings_.catalogFolders[application];
    std::erase(folders, folder);
    folders.insert(folders.begin(), folder);
    save();
}

const std::string& PhotoCleanupModel::catalog(Scope scope) const {
    static const std::string none;
    if (!scope.catalog) {
        return none;
    }
    auto found = settings_.catalogs.find(*scope.catalog);
    return found == settings_.catalogs.end() ? none : found->second;
}

const std::string& PhotoCleanupModel::catalogNotice(Scope scope) const {
    static const std::string none;
    auto found = catalogNotices_.find(scope);
    return found == catalogNotices_.end() ? none : found->second;
}

std::string PhotoCleanupModel::defaultCatalogFolder(Scope scope) {
    return scope.catalog ? CatalogSource::defaultFolder(*scope.catalog) : std::string();
}

void PhotoCleanupModel::findCatalog(Scope scope, const std::optional<std::string>& folder) {
    if (!scope.catalog) {
        return;
    }
    auto application = *scope.catalog;
    std::string searched = folder.value_or(defaultCatalogFolder(scope));
    int search = ++catalogSearches_[scope];
    worker_.run(
        [application, searched](const CancellationFlag&) {
            return CatalogSource::choose(application, searched);
        },
        [this, scope, application, searched, search](const CatalogChoice& choice) {
            if (search != catalogSearches_[scope]) {
                return;
            }
            catalogNotices_[scope] = choice.notice.value_or(std::string());
            if (choice.catalog) {
                setCatalog(application, *choice.catalog, searched);
            }
            Q_EMIT catalogChanged(scope);
        });
}

bool PhotoCleanupModel::canScan() const {
    if (phase_ == Phase::scanning || phase_ == Phase::cleaning || phase_ == Phase::compressing) {
        return false;
    }
    if (settings_.scope == Scope::folders) {
        return !settings_.sources.empty();
    }
    return !catalog(settings_.scope).empty();
}

ScanRequest PhotoCleanupModel::request() const {
    ScanSource source = settings_.scope == Scope::folders
                            ? ScanSource::ofFolders(settings_.sources)
                            : ScanSource::ofCatalog(catalog(settings_.scope));
    ReviewRules rules{
        .locks = locks_,
        .protectedRoots = {settings_.protectedFolders.begin(), settings_.protectedFolders.end()},
        .inboxFolders = settings_.inboxFolders,
        .priorities = settings_.priorities};
    return {.source = std::move(source),
            .mode = {.kind = settings_.mode, .preset = settings_.preset},
            .featureCache = featureCachePath(),
            .notDuplicates = platform::DataFolder{dataFolder_}.notDuplicates(),
            .savedReviews = reviewsPath(),
            .review = std::move(rules)};
}

bool PhotoCleanupModel::startScan() {
    if (!canScan()) {
        return false;
    }
    hasResult_ = false;
    ++generation_;
    Q_EMIT resultChanged();

    progress_ = {};
    clock_.start();
    setPhase(Phase::scanning);
    cancel_ = worker_.runReporting<ModelProgress>(
        [pipeline = pipeline_, asked = request(), lockStore = lockStorePath(),
         older = outcome_](const CancellationFlag& cancel, const auto& report) {
            ScanRequest request = asked;
            // Read once, by the first scan: locks matter only once there
            // are groups.
            if (!request.review->locks) {
                request.review->locks = std::make_shared<LockStore>(lockStore);
            }
            auto outcome = pipeline.run(request, cancel, report);
            // No screen holds the older session while a scan runs, so its
            // marks stay as they are: a million of them are carried here
            // rather than on the interface thread.
            if (outcome && older) {
                outcome->carryMarks(*older);
            }
            return outcome;
        },
        [this](const ModelProgress& progress) { showProgress(progress); },
        [this](std::expected<ScanOutcome, std::string> outcome) { finishScan(std::move(outcome)); },
        // Reports of one stage replace each other; a new stage queues
        // behind the last, so every stage reaches the screen.
        [](const ModelProgress& waiting, const ModelProgress& newer) {
            return waiting.scan.stage == newer.scan.stage;
        });
    return true;
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
    if (phase_ != Phase::scanning && phase_ != Phase::cleaning && phase_ != Phase::compressing) {
        setPhase(Phase::idle);
    }
}

bool PhotoCleanupModel::beginCleaning() {
    if (!hasResult_ || phase_ == Phase::scanning || phase_ == Phase::cleaning) {
        return false;
    }
    setPhase(Phase::cleaning);
    return true;
}

void PhotoCleanupModel::endCleaning() {
    if (phase_ == Phase::cleaning) {
        setPhase(Phase::finished);
    }
}

bool PhotoCleanupModel::beginCompressing() {
    if (phase_ == Phase::scanning || phase_ == Phase::cleaning || phase_ == Phase::compressing) {
        return false;
    }
    setPhase(Phase::compressing);
    return true;
}

void PhotoCleanupModel::endCompressing() {
    if (phase_ == Phase::compressing) {
        setPhase(hasResult_ ? Phase::reviewing : Phase::idle);
    }
}

bool PhotoCleanupModel::showReports() {
    if (phase_ == Phase::scanning || phase_ == Phase::cleaning || phase_ == Phase::compressing) {
        return false;
    }
    setPhase(Phase::finished);
    return true;
}

void PhotoCleanupModel::closeReports() {
    if (phase_ == Phase::finished) {
        setPhase(hasResult_ ? Phase::reviewing : Phase::idle);
    }
}

std::int64_t PhotoCleanupModel::elapsedMilliseconds() const {
    return clock_.isValid() ? clock_.elapsed() : 0;
}

const ScanResult& PhotoCleanupModel::result() const {
    return hasResult_ ? *outcome_->result : kNoResult;
}

PhotoCleanupModel::Mode PhotoCleanupModel::resultMode() const {
    return outcome_ ? outcome_->request.mode.kind : Mode::identical;
}

SimilarityPreset PhotoCleanupModel::groupedPreset() const {
    return outcome_ ? outcome_->request.mode.preset : SimilarityPreset::balanced;
}

std::shared_ptr<const SimilarityIndex> PhotoCleanupModel::index() const {
    return hasResult_ ? outcome_->index : nullptr;
}

std::optional<CatalogSource::Facts> PhotoCleanupModel::catalogFacts() const {
    return hasResult_ ? outcome_->catalog : std::nullopt;
}

const std::vector<DuplicateGroup>& PhotoCleanupModel::groups() const {
    return hasResult_ ? outcome_->groups : kNoGroups;
}

std::shared_ptr<ReviewSession> PhotoCleanupModel::session() const {
    return hasResult_ ? outcome_->session : nullptr;
}

void PhotoCleanupModel::setPhase(Phase phase) {
    if (phase_ == phase) {
        return;
    }
    phase_ = phase;
    Q_EMIT phaseChanged(phase);
}

void PhotoCleanupModel::showProgress(const ModelProgress& progress) {
    if (phase_ != Phase::scanning) {
        return;
    }
    progress_ = progress;
    Q_EMIT progressChanged(progress_);
}

void PhotoCleanupModel::finishScan(std::expected<ScanOutcome, std::string> outcome) {
    cancel_.reset();
    scanMilliseconds_ = elapsedMilliseconds();
    if (!outcome) {
        setPhase(Phase::idle);
        Q_EMIT scanFailed(qtText(outcome.error()));
        return;
    }
    if (outcome->cancelled()) {
        setPhase(Phase::idle);
        Q_EMIT scanCancelled();
        return;
    }
    if (const auto& review = outcome->request.review) {
        locks_ = review->locks;
    }
    if (const std::optional<ResumedReview>& resumed = outcome->resumed) {
        reviewed_.insert(resumed->reviewed.begin(), resumed->reviewed.end());
    }
    adopt(std::move(*outcome));
    setPhase(Phase::reviewing);
    // The preset may have changed while the scan ran.
    if (resultMode() == Mode::similar && settings_.preset != groupedPreset()) {
        regroup();
    }
}

void PhotoCleanupModel::regroup() {
    int generation = ++generation_;
    // The rules as they are now; the session itself stays on this thread.
    std::optional<ReviewRules> rules = outcome_->request.review;
    ReviewSession::MarksAt marks;
    if (outcome_->session) {
        rules = ReviewRules::of(*outcome_->session);
        marks = outcome_->session->marksAt();
    }
    // The marks are carried on the worker as they stand now; marking on
    // meanwhile leaves them to be carried again when the groups arrive.
    worker_.run(
        [outcome = outcome_, preset = settings_.preset, rules,
         marks = std::move(marks)](const CancellationFlag&) {
            ScanOutcome regrouped = ScanPipeline::regroup(*outcome, preset, rules);
            regrouped.carryMarks(*outcome, marks);
            return regrouped;
        },
        [this, generation](ScanOutcome regrouped) {
            if (generation == generation_) {
                adopt(std::move(regrouped));
            }
        });
}

void PhotoCleanupModel::adopt(ScanOutcome outcome) {
    // The marks as they are now: a rescan or a regroup keeps those still
    // allowed.
    marksFromOtherMode_ = 0;
    if (outcome_) {
        if (!outcome.carriesMarksOf(*outcome_)) {
            outcome.carryMarks(*outcome_);
        }
        bool otherMode = outcome_->request.mode.kind != outcome.request.mode.kind;
        if (otherMode && outcome.session) {
            marksFromOtherMode_ = static_cast<int>(outcome.session->marks().size());
        }
    }
    auto older = std::exchange(outcome_, std::make_shared<const ScanOutcome>(std::move(outcome)));
    hasResult_ = true;
    ++generation_;
    Q_EMIT resultChanged();
    letGo(std::move(older));
}

void PhotoCleanupModel::letGo(std::shared_ptr<const ScanOutcome> older) {
    if (older == nullptr) {
        return;
    }
    // Freeing a million pictures took most of a second; the screens have
    // let go of the old session by now, so it ends on a worker.
    auto held = std::make_shared<std::shared_ptr<const ScanOutcome>>(std::move(older));
    worker_.run(
        [held](const CancellationFlag&) {
            held->reset();
            return true;
        },
        [](bool) {});
}

void PhotoCleanupModel::noteReviewed(const std::string& groupId) {
    if (reviewed_.insert(groupId).second) {
        saveSoon_.start();
    }
}

void PhotoCleanupModel::saveReview() {
    saveSoon_.stop();
    building_.reset();
    if (!hasResult_ || !outcome_) {
        return;
    }
    building_ = ScanPipeline::reviewBuilder(*outcome_, reviewed_, Date::now());
    if (building_) {
        buildReviewSlice();
    }
}

void PhotoCleanupModel::buildReviewSlice() {
    if (!building_) {
        return;
    }
    // Marks still changing (the suggested copies being marked a slice at a
    // time): wait for them to settle rather than copying them again and
    // again between the marking's own slices.
    if (building_->isOutdated()) {
        building_.reset();
        saveSoon_.start();
        return;
    }
    // As long a slice as marking takes: a million marks are taken in about
    // two seconds, never in one piece.
    constexpr std::size_t kMarksAtOnce = 2000;
    constexpr qint64 kSliceMilliseconds = 15;
    QElapsedTimer slice;
    slice.start();
    while (!building_->step(kMarksAtOnce)) {
        if (slice.elapsed() >= kSliceMilliseconds) {
            buildSlice_.start();
            return;
        }
    }
    SavedReview review = building_->take();
    building_.reset();
    lastReview_ =
        SavedReview{.folders = review.folders, .mode = review.mode, .saved = review.saved};
    reviewSaver_->offer(std::move(review));
    worker_.run(
        [saver = reviewSaver_](const CancellationFlag&) {
            saver->write();
            return true;
        },
        [](bool) {});
    Q_EMIT lastReviewChanged();
}

bool PhotoCleanupModel::resumeLastReview() {
    if (!lastReview_ || phase_ == Phase::scanning || phase_ == Phase::cleaning ||
        phase_ == Phase::compressing) {
        return false;
    }
    // Set at once: a preset change alone would regroup the result shown.
    settings_.scope = Scope::folders;
    settings_.sources = lastReview_->folders;
    settings_.mode = lastReview_->mode.kind;
    settings_.preset = lastReview_->mode.preset;
    save();
    return startScan();
}

QString PhotoCleanupModel::resumedText() const {
    if (!hasResult_ || !outcome_) {
        return {};
    }
    const std::optional<ResumedReview>& resumed = outcome_->resumed;
    return resumed ? qtText(resumed->message()) : QString();
}

void PhotoCleanupModel::applyCleanup(const CleanupReport& report) {
    if (!hasResult_) {
        return;
    }
    adopt(ScanPipeline::afterCleanup(*outcome_, report));
}

void PhotoCleanupModel::applyPutBack(const std::vector<std::string>& returned) {
    if (!hasResult_ || returned.empty()) {
        return;
    }
    adopt(ScanPipeline::afterPutBack(*outcome_, returned));
}

int PhotoCleanupModel::copiesAway() const {
    return hasResult_ ? static_cast<int>(outcome_->away.size()) : 0;
}

bool PhotoCleanupModel::declareNotDuplicates(std::vector<std::vector<std::string>> decisions) {
    if (!hasResult_ || phase_ != Phase::reviewing || decisions.empty()) {
        return false;
    }
    std::shared_ptr<const SimilarityIndex> older = outcome_->index;
    worker_.run(
        [outcome = outcome_, decisions = std::move(decisions)](const CancellationFlag& cancel) {
            return DeclaredDifferences::declare(*outcome, decisions, cancel);
        },
        [this, older](std::expected<std::shared_ptr<const SimilarityIndex>, std::string> declared) {
            if (!declared) {
                Q_EMIT declareRefused(qtText(declared.error()));
                return;
            }
            // A regroup or a cleanup meanwhile kept the index, so the
            // decision applies to what is shown now; after a new scan the
            // next one honours it.
            if (!hasResult_ || outcome_->index != older) {
                return;
            }
            adopt(DeclaredDifferences::regrouped(*outcome_, std::move(*declared)));
            Q_EMIT notDuplicatesDeclared();
        });
    return true;
}

std::vector<KindSummary> PhotoCleanupModel::kinds() const {
    return hasResult_ ? outcome_->summary.kinds : std::vector<KindSummary>{};
}

std::int64_t PhotoCleanupModel::bytesToFree() const {
    return hasResult_ ? outcome_->summary.bytesToFree : 0;
}

int PhotoCleanupModel::picturesInGroups() const {
    return hasResult_ ? outcome_->summary.pictures : 0;
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
    case Phase::compressing:
        return "compressing";
    }
    return "idle";
}

void PrintTo(PhotoCleanupModel::Phase phase, std::ostream* os) {
    *os << rawValue(phase);
}

} // namespace brevant::gui
