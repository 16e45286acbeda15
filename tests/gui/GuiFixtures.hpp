#pragma once

#include "tests/fixtures/TempTree.hpp"

#include "app/gui/PhotoCleanupModel.hpp"
#include "engine/scan/ScanProgress.hpp"

#include <QObject>
#include <QSettings>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace brevant::gui::testing {

using brevant::testing::TempTree;

// The sample library of tools/make-sample-library, written into a fresh
// temporary folder (20 pictures: two identical pairs, six similar groups at
// the balanced preset, three at the conservative one, one burst of four).
class SampleLibrary {
public:
    SampleLibrary();

    [[nodiscard]] const std::string& root() const { return root_; }

    [[nodiscard]] std::string path(const std::string& relative) const;
    // Adds files a scan skips: an empty JPEG, a Photoshop document and a
    // damaged JPEG.
    void addSkippedFiles() const;

private:
    TempTree tree_;
    std::string root_;
};

// How often the model called the engine, counted on the worker threads.
struct EngineCalls {
    std::atomic<int> scans = 0;
    std::atomic<int> measures = 0;
    std::atomic<int> faceChecks = 0;
    // Records in the feature cache when measuring began.
    std::atomic<int> cachedBeforeMeasuring = -1;
};

// The standard engine, counting its calls.
[[nodiscard]] PhotoCleanupModel::Engine countingEngine(EngineCalls& calls);

// Changes the engine a model is given, for a test that needs to hold it.
using EngineWrapper = std::function<PhotoCleanupModel::Engine(PhotoCleanupModel::Engine)>;

// A model over its own settings file and data folder.
class ModelFixture {
public:
    explicit ModelFixture(const EngineWrapper& wrap = {});

    [[nodiscard]] PhotoCleanupModel& model() { return *model_; }

    [[nodiscard]] QSettings& store() { return *store_; }

    [[nodiscard]] EngineCalls& calls() { return calls_; }

    [[nodiscard]] const std::string& dataFolder() const { return dataFolder_; }

    [[nodiscard]] std::string settingsPath() const;

private:
    TempTree tree_;
    std::string dataFolder_;
    std::unique_ptr<QSettings> store_;
    EngineCalls calls_;
    std::unique_ptr<PhotoCleanupModel> model_;
};

// Every stage a model reported, consecutive repeats folded.
class StageRecorder {
public:
    explicit StageRecorder(PhotoCleanupModel& model);

    [[nodiscard]] const std::vector<ScanProgress::Stage>& stages() const { return stages_; }

    [[nodiscard]] const std::vector<ModelProgress>& reports() const { return reports_; }

private:
    QObject context_;
    std::vector<ScanProgress::Stage> stages_;
    std::vector<ModelProgress> reports_;
};

// The paths of a group's members relative to the library, sorted.
[[nodiscard]] std::vector<std::string> memberNames(const DuplicateGroup& group,
                                                   const std::string& root);

// The file's size on disk.
[[nodiscard]] std::int64_t fileSize(const std::string& path);

} // namespace brevant::gui::testing
