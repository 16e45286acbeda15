// How long the window's interface thread stalls while a scan runs.
//
//   bench_gui_stall [--pictures N] [--corpus DIR] [--mode identical|similar|series]
//                   [--make-only yes] [--verbose yes]
//
// Writes N pictures (default 10,000; 640x480 JPEG, in blocks of 50: 46
// photos of their own, two byte-for-byte copies in a backup folder, a
// half-size copy and one re-saved at quality 60) into DIR (a temporary
// folder by default; an existing DIR is scanned as it is), opens the
// window, and scans it from a fresh feature cache while a 4 ms timer on
// the interface thread records how late each of its ticks comes. A stall
// is a tick's lateness; the longest one is what a user would feel as the
// window freezing. The same is measured for a preset change afterwards.
// --verbose lists every stall above 50 ms with the stage it fell in.
#include "tests/fixtures/ImageFixtures.hpp"

#include "app/gui/MainWindow.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/Skins.hpp"

#include <QApplication>
#include <QElapsedTimer>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using brevant::gui::ModelProgress;
using brevant::gui::PhotoCleanupModel;
using brevant::testing::makeScene;
using brevant::testing::saveImage;
using Mode = brevant::gui::CleanupSettings::Mode;

constexpr int kTickMs = 4;
constexpr int kUniquePerBlock = 46;

// Blocks of 50 files, laid out by year and month: 46 photos of their own,
// two byte-for-byte copies in a backup folder, a half-size copy and a copy
// re-saved at quality 60, as a library that was copied around now and then.
void makeCorpus(const std::string& root, int pictures) {
    int written = 0;
    for (int block = 0; written < pictures; ++block) {
        std::string folder = fmt::format("{}/{}/{:02}", root, 2000 + block / 12, block % 12 + 1);
        std::string backup = fmt::format("{}/Backup/{:03}", root, block);
        std::error_code error;
        fs::create_directories(folder, error);
        fs::create_directories(backup, error);
        for (int i = 0; i < kUniquePerBlock && written < pictures; ++i, ++written) {
            unsigned seed = 1000 + block * kUniquePerBlock + i;
            std::string original = fmt::format("{}/IMG_{:06}.jpg", folder, seed);
            vips::VImage image = makeScene(640, 480, seed);
            saveImage(image, original, {.quality = 88});
            if (i < 2 && written + 1 < pictures) {
                fs::copy_file(original, fmt::format("{}/IMG_{:06}.jpg", backup, seed), error);
                ++written;
            } else if (i == 2 && written + 1 < pictures) {
                saveImage(image.resize(0.5), fmt::format("{}/IMG_{:06} small.jpg", folder, seed),
                          {.quality = 85});
                ++written;
            } else if (i == 3 && written + 1 < pictures) {
                saveImage(image, fmt::format("{}/IMG_{:06} web.jpg", folder, seed),
                          {.quality = 60});
                ++written;
            }
        }
        std::fprintf(stderr, "\r%d of %d pictures written", written, pictures);
    }
    std::fprintf(stderr, "\n");
}

// Records how late each tick of a fast timer comes while it runs.
class StallMeter {
public:
    StallMeter() {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(kTickMs);
        QObject::connect(&timer_, &QTimer::timeout, [this] { tick(); });
    }

    void start(const QString& where) {
        where_ = where;
        gaps_.clear();
        worst_ = 0;
        clock_.start();
        last_ = 0;
        timer_.start();
    }

    void stop() { timer_.stop(); }

    void setVerbose(bool verbose) { verbose_ = verbose; }

    void setWhere(const QString& where) { where_ = where; }

    [[nodiscard]] double worstMs() const { return static_cast<double>(worst_) / 1e6; }

    [[nodiscard]] const QString& worstWhere() const { return worstWhere_; }

    [[nodiscard]] double percentileMs(double fraction) const {
        if (gaps_.empty()) {
            return 0;
        }
        std::vector<qint64> sorted = gaps_;
        std::ranges::sort(sorted);
        auto index = static_cast<std::size_t>(fraction * static_cast<double>(sorted.size() - 1));
        return static_cast<double>(sorted[index]) / 1e6;
    }

    [[nodiscard]] std::size_t ticks() const { return gaps_.size(); }

private:
    void tick() {
        qint64 now = clock_.nsecsElapsed();
        qint64 late = std::max<qint64>(0, now - last_ - qint64{kTickMs} * 1'000'000);
        last_ = now;
        gaps_.push_back(late);
        if (verbose_ && late > kNoticedNs) {
            std::fprintf(stderr, "%8.3f s: %6.1f ms late (%s)\n", static_cast<double>(now) / 1e9,
                         static_cast<double>(late) / 1e6, qPrintable(where_));
        }
        if (late > worst_) {
            worst_ = late;
            worstWhere_ = where_;
        }
    }

    static constexpr qint64 kNoticedNs = 50'000'000;

    QTimer timer_;
    QElapsedTimer clock_;
    bool verbose_ = false;
    qint64 last_ = 0;
    qint64 worst_ = 0;
    QString where_;
    QString worstWhere_;
    std::vector<qint64> gaps_;
};

void waitForPhase(PhotoCleanupModel& model, PhotoCleanupModel::Phase phase) {
    while (model.phase() != phase) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
}

void report(const char* what, const StallMeter& meter, double seconds) {
    std::printf("%-26s %8.1f s %8zu ticks   longest stall %7.1f ms (%s)   99th %5.1f ms   "
                "median %4.1f ms\n",
                what, seconds, meter.ticks(), meter.worstMs(), qPrintable(meter.worstWhere()),
                meter.percentileMs(0.99), meter.percentileMs(0.5));
}

} // namespace

int main(int argc, char** argv) {
    int pictures = 10'000;
    std::string corpus;
    Mode mode = Mode::similar;
    bool makeOnly = false;
    bool verbose = false;
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string option = argv[i];
        if (option == "--pictures") {
            pictures = std::atoi(argv[i + 1]);
        } else if (option == "--corpus") {
            corpus = argv[i + 1];
        } else if (option == "--verbose") {
            verbose = std::string(argv[i + 1]) == "yes";
        } else if (option == "--make-only") {
            makeOnly = std::string(argv[i + 1]) == "yes";
        } else if (option == "--mode") {
            mode = brevant::fromRawValue<Mode>(argv[i + 1]).value_or(mode);
        }
    }
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    QTemporaryDir scratch;
    if (corpus.empty()) {
        corpus = scratch.filePath(QStringLiteral("corpus")).toStdString();
    }
    std::error_code error;
    if (!fs::exists(corpus, error)) {
        makeCorpus(corpus, pictures);
    }
    if (makeOnly) {
        return 0;
    }

    QSettings store(scratch.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    brevant::gui::Skins skins;
    skins.apply(QStringLiteral("classic"));
    PhotoCleanupModel model(store, scratch.filePath(QStringLiteral("data")).toStdString(), {});
    brevant::gui::MainWindow window(model, skins, store);
    window.show();
    model.setSources({corpus});
    model.setMode(mode);

    StallMeter meter;
    meter.setVerbose(verbose);
    QObject::connect(&model, &PhotoCleanupModel::progressChanged,
                     [&meter](const ModelProgress& progress) {
                         meter.setWhere(QString::fromUtf8(rawValue(progress.scan.stage).data()));
                     });
    QObject::connect(&model, &PhotoCleanupModel::resultChanged,
                     [&meter] { meter.setWhere(QStringLiteral("showing the result")); });
    QElapsedTimer clock;
    clock.start();
    meter.start(QStringLiteral("starting"));
    model.startScan();
    waitForPhase(model, PhotoCleanupModel::Phase::reviewing);
    // The screens finish painting the result.
    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 300) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
    meter.stop();
    std::printf("%d pictures found, %d examined, %zu groups, %s mode\n", model.result().discovered,
                model.result().examined, model.groups().size(),
                std::string(rawValue(mode)).c_str());
    report("scan", meter, static_cast<double>(clock.elapsed()) / 1000);

    if (mode == Mode::similar) {
        clock.restart();
        meter.start(QStringLiteral("regrouping"));
        model.setPreset(brevant::SimilarityPreset::conservative);
        while (model.groupedPreset() != brevant::SimilarityPreset::conservative) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        }
        meter.stop();
        report("preset change (regroup)", meter, static_cast<double>(clock.elapsed()) / 1000);
    }
    return 0;
}
