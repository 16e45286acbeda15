#include "tests/gui/GuiFixtures.hpp"

#include "tests/fixtures/ImageFixtures.hpp"

#include "engine/similarity/FeatureCache.hpp"

#include <QObject>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>

namespace brevant::gui::testing {

SampleLibrary::SampleLibrary()
    : root_(tree_.path("library")) {
    std::string command = std::string(BREVANT_SAMPLE_TOOL) + " '" + root_ + "' >/dev/null";
    if (brevant::testing::runCommand(command) != 0) {
        throw std::runtime_error("the sample library could not be made");
    }
}

std::string SampleLibrary::path(const std::string& relative) const {
    return root_ + "/" + relative;
}

void SampleLibrary::addSkippedFiles() const {
    tree_.file("library/Others/empty.jpg", "");
    tree_.file("library/Others/broken.jpg", "\xFF\xD8\xFF this is not a picture at all");
    // A Photoshop document: a picture type that is not compared.
    tree_.file("library/Others/layers.psd", "8BPS");
}

PhotoCleanupModel::Engine countingEngine(EngineCalls& calls) {
    PhotoCleanupModel::Engine engine = PhotoCleanupModel::Engine::standard();
    engine.scan = [&calls, scan = engine.scan](const std::vector<std::string>& folders,
                                               bool keepPictures, const CancellationFlag& cancel,
                                               const ExactMatcher::Progress& progress) {
        ++calls.scans;
        return scan(folders, keepPictures, cancel, progress);
    };
    engine.measure = [&calls,
                      measure = engine.measure](std::vector<PhotoAsset> pictures,
                                                FeatureCache* cache, const CancellationFlag& cancel,
                                                const SimilarityMatcher::Progress& progress) {
        ++calls.measures;
        calls.cachedBeforeMeasuring = cache != nullptr ? static_cast<int>(cache->count()) : -1;
        return measure(std::move(pictures), cache, cancel, progress);
    };
    engine.checkFaces = [&calls, check = engine.checkFaces](
                            const std::vector<DuplicateGroup>& groups, const SimilarityIndex& index,
                            FeatureCache* cache, const CancellationFlag& cancel,
                            const SimilarityMatcher::Progress& progress) {
        ++calls.faceChecks;
        return check(groups, index, cache, cancel, progress);
    };
    return engine;
}

ModelFixture::ModelFixture(const EngineWrapper& wrap)
    : dataFolder_(tree_.folder("data")) {
    store_ =
        std::make_unique<QSettings>(QString::fromStdString(settingsPath()), QSettings::IniFormat);
    PhotoCleanupModel::Engine engine = countingEngine(calls_);
    model_ =
        std::make_unique<PhotoCleanupModel>(*store_, dataFolder_, tree_.folder("Downloads"),
                                            wrap ? wrap(std::move(engine)) : std::move(engine));
}

std::string ModelFixture::settingsPath() const {
    return tree_.path("settings.ini");
}

StageRecorder::StageRecorder(PhotoCleanupModel& model) {
    QObject::connect(&model, &PhotoCleanupModel::progressChanged, &context_,
                     [this](const ModelProgress& progress) {
                         reports_.push_back(progress);
                         if (stages_.empty() || stages_.back() != progress.scan.stage) {
                             stages_.push_back(progress.scan.stage);
                         }
                     });
}

std::vector<std::string> memberNames(const DuplicateGroup& group, const std::string& root) {
    std::vector<std::string> names;
    names.reserve(group.members.size());
    for (const auto& member : group.members) {
        names.push_back(member.path.substr(root.size() + 1));
    }
    std::ranges::sort(names);
    return names;
}

std::int64_t fileSize(const std::string& path) {
    struct stat status{};
    if (::lstat(path.c_str(), &status) != 0) {
        return -1;
    }
    return status.st_size;
}

} // namespace brevant::gui::testing
