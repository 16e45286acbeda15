#include "PhotoCleanupModel.hpp"

#include "engine/platform/ThreadPriority.hpp"
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

struct PhotoCleanupModel::Outcome {
    ScanResult result;
    std::shared_ptr<const SimilarityIndex> index;
    std::vector<DuplicateGroup> groups;
    Mode mode = Mode::identical;
    SimilarityPreset preset = SimilarityPreset::balanced;
    bool cancelled = false;
};

namespace {

using Report = std::function<void(const ModelProgress&)>;

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
    return dataFolder_ + "/" + kFeatureCacheName;
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
    save();
}

void PhotoCleanupModel::setInboxFolders(std::vector<std::string> folders) {
    settings_.inboxFolders = std::move(folders);
    save();
}

void PhotoCleanupModel::setPriorities(std::vector<std::string> priorities, int revision) {
    settings_.priorities = std::move(priorities);
    settings_.prioritiesRevision = revision;
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

bool PhotoCleanupModel::startScan() {
    if (phase_ == Phase::scanning || settings_.sources.empty()) {
        return false;
    }
    // Seam: catalog scopes scan through LightroomScanner and
    // CaptureOneScanner once engine/catalogs is merged.
    if (settings_.scope != Scope::folders) {
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

    auto outcome = std::make_shared<Outcome>();
    outcome->mode = settings_.mode;
    outcome->preset = settings_.preset;
    pool_.start([this, outcome, cancel = cancel_, folders = settings_.sources,
                 cachePath = featureCachePath(), engine = engine_] {
        platform::runInBackground();
        Report report = [this](const ModelProgress& progress) { post(progress); };
        bool measuring = outcome->mode != Mode::identical;
        ScanProgress last;
        outcome->result = engine.scan(folders, measuring, *cancel, [&](const ScanProgress& now) {
            last = now;
            // The matcher's end is not the end of a scan that measures next.
            if (!measuring || now.stage != Stage::finishing) {
                report({now, 0, std::nullopt});
            }
        });
        outcome->cancelled = outcome->result.cancelled || cancel->isCancelled();
        if (measuring && !outcome->cancelled) {
            auto index = measure(outcome->result, last, engine, cachePath, *cancel, report);
            outcome->cancelled = !index.has_value();
            if (index) {
                outcome->index = std::make_shared<const SimilarityIndex>(std::move(*index));
                last.stage = Stage::finishing;
                report({last, 0, std::nullopt});
            }
        }
        if (!outcome->cancelled) {
            outcome->groups = groupsFor(outcome->mode, outcome->preset, outcome->result.groups,
                                        outcome->index.get());
        }
        QMetaObject::invokeMethod(
            this, [this, outcome] { finishScan(outcome); }, Qt::QueuedConnection);
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
    if (outcome->cancelled) {
        setPhase(Phase::idle);
        Q_EMIT scanCancelled();
        return;
    }
    result_ = std::move(outcome->result);
    index_ = std::move(outcome->index);
    groups_ = std::move(outcome->groups);
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
    pool_.start([this, generation, identical, index = index_, preset = settings_.preset] {
        platform::runInBackground();
        auto groups = std::make_shared<std::vector<DuplicateGroup>>(
            groupsFor(Mode::similar, preset, *identical, index.get()));
        QMetaObject::invokeMethod(
            this,
            [this, generation, preset, groups] {
                if (generation != generation_) {
                    return;
                }
                groups_ = std::move(*groups);
                groupedPreset_ = preset;
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
        return index->series(kSeriesWindow, SimilarityThresholds::kSeriesRelated);
    }
    std::vector<DuplicateGroup> groups = index->groups(preset);
    std::set<std::string> grouped;
    for (const auto& group : groups) {
        for (const auto& member : group.members) {
            grouped.insert(member.path);
        }
    }
    for (const auto& group : identical) {
        bool apart = std::ranges::none_of(
            group.members, [&](const PhotoAsset& member) { return grouped.contains(member.path); });
        if (apart) {
            groups.push_back(group);
        }
    }
    sortGroupsBySavings(groups);
    return groups;
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
