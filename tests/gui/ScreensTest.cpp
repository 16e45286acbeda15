#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/FolderList.hpp"
#include "app/gui/HomeScreen.hpp"
#include "app/gui/LeftOutList.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/ProgressScreen.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/Skins.hpp"
#include "app/gui/WindowTexts.hpp"

#include <QComboBox>
#include <QListWidget>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <atomic>
#include <chrono>
#include <sys/time.h>
#include <thread>

namespace brevant::gui::testing {

namespace {

using Mode = CleanupSettings::Mode;
using Phase = PhotoCleanupModel::Phase;
using Stage = ScanProgress::Stage;

constexpr int kScanTimeoutMs = 240'000;

// The bytes removing all but the largest copy of each group frees,
// measured on disk.
std::int64_t freedOnDisk(const std::vector<DuplicateGroup>& groups) {
    std::int64_t freed = 0;
    for (const auto& group : groups) {
        std::int64_t total = 0;
        std::int64_t largest = 0;
        for (const auto& member : group.members) {
            std::int64_t size = fileSize(member.path);
            total += size;
            largest = std::max(largest, size);
        }
        freed += total - largest;
    }
    return freed;
}

// Clicks a radio button on its indicator: the button may be much wider
// than its text, and only the indicator and text take clicks.
void clickChoice(QRadioButton* button) {
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
}

// Holds the scan at its first report of reading until the scan is
// cancelled, so that a cancel sent on that report lands while reading, however
// fast the worker is. Bounded, so that a missing cancel fails the test
// instead of hanging it.
PhotoCleanupModel::Engine holdReadingUntilCancelled(PhotoCleanupModel::Engine engine) {
    engine.scan = [scan = std::move(engine.scan)](const std::vector<std::string>& folders,
                                                  bool keepPictures, const CancellationFlag& cancel,
                                                  const ExactMatcher::Progress& progress) {
        std::atomic<bool> held = false;
        return scan(folders, keepPictures, cancel, [&](const ScanProgress& report) {
            progress(report);
            if (report.stage != Stage::reading || held.exchange(true)) {
                return;
            }
            auto until = std::chrono::steady_clock::now() + std::chrono::seconds(60);
            while (!cancel.isCancelled() && std::chrono::steady_clock::now() < until) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
    };
    return engine;
}

// A window over a model, as the program builds it.
struct WindowFixture {
    ModelFixture fixture;
    Skins skins;
    MainWindow window{fixture.model(), skins, fixture.store()};

    explicit WindowFixture(const EngineWrapper& wrap = {})
        : fixture(wrap) {
        window.show();
        (void)QTest::qWaitForWindowExposed(&window);
    }
};

} // namespace

class ScreensTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() {
        library_ = std::make_unique<SampleLibrary>();
        library_->addSkippedFiles();
    }

    void homeShowsAndChangesTheSettings();
    void homeTakesFoldersDroppedFromAFileManager();
    void progressShowsEveryStageAndItsCounts();
    void overviewShowsWhatTheResultHolds();
    void cancelLeadsBackHomeWithANotice();
    void homeChoosesAndScansALightroomCatalog();

private:
    std::unique_ptr<SampleLibrary> library_;
};

void ScreensTest::homeShowsAndChangesTheSettings() {
    WindowFixture w;
    PhotoCleanupModel& model = w.fixture.model();
    HomeScreen* home = w.window.home();
    QCOMPARE(w.window.currentScreen(), home);
    // Nothing to scan yet.
    QVERIFY(!home->scanButton()->isEnabled());
    QVERIFY(home->modeButton(Mode::identical)->isChecked());
    QVERIFY(!home->presetButton(SimilarityPreset::broad)->isEnabled());

    home->sources()->addFolders({library_->root(), library_->root()});
    QCOMPARE(model.settings().sources, std::vector<std::string>{library_->root()});
    QCOMPARE(home->sources()->list()->count(), 1);
    QCOMPARE(home->sources()->list()->item(0)->text(), QString::fromStdString(library_->root()));
    QVERIFY(home->scanButton()->isEnabled());

    clickChoice(home->modeButton(Mode::similar));
    QCOMPARE(model.settings().mode, Mode::similar);
    QVERIFY(home->presetButton(SimilarityPreset::broad)->isEnabled());
    clickChoice(home->presetButton(SimilarityPreset::broad));
    QCOMPARE(model.settings().preset, SimilarityPreset::broad);
    QCOMPARE(home->summaryText(),
             QStringLiteral("Looks for similar versions (Broad) in 1 folder."));

    home->protectedFolders()->addFolders({library_->path("Backup")});
    QCOMPARE(model.settings().protectedFolders, std::vector<std::string>{library_->path("Backup")});

    // Removing the folder again leaves nothing to scan.
    home->sources()->list()->item(0)->setSelected(true);
    QTest::mouseClick(home->sources()->removeButton(), Qt::LeftButton);
    QVERIFY(model.settings().sources.empty());
    QVERIFY(!home->scanButton()->isEnabled());
}

void ScreensTest::homeTakesFoldersDroppedFromAFileManager() {
    WindowFixture w;
    FolderList* sources = w.window.home()->sources();
    QList<QUrl> dropped{
        QUrl::fromLocalFile(QString::fromStdString(library_->path("Burst"))),
        QUrl::fromLocalFile(QString::fromStdString(library_->path("Burst/IMG_2001.JPG"))),
        QUrl(QStringLiteral("https://example.org/photos"))};
    // Only local folders count; a file or a web address is not a folder.
    QCOMPARE(FolderList::droppedFolders(dropped),
             std::vector<std::string>{library_->path("Burst")});

    QMimeData data;
    data.setUrls(dropped);
    QPoint centre = sources->rect().center();
    QDragEnterEvent enter(centre, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(sources, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(centre, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(sources, &drop);
    QCOMPARE(w.fixture.model().settings().sources,
             std::vector<std::string>{library_->path("Burst")});

    QMimeData files;
    files.setUrls(
        {QUrl::fromLocalFile(QString::fromStdString(library_->path("Burst/IMG_2001.JPG")))});
    QDragEnterEvent refused(centre, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    refused.ignore();
    QApplication::sendEvent(sources, &refused);
    QVERIFY(!refused.isAccepted());
}

void ScreensTest::progressShowsEveryStageAndItsCounts() {
    WindowFixture w;
    PhotoCleanupModel& model = w.fixture.model();
    ProgressScreen* progress = w.window.progressScreen();
    model.setSources({library_->root()});
    model.setMode(Mode::similar);

    // Checked after each report, once the screen has shown it.
    std::vector<Stage> shown;
    QStringList mismatches;
    QObject context;
    connect(&model, &PhotoCleanupModel::progressChanged, &context,
            [&](const ModelProgress& report) {
                if (w.window.currentScreen() != progress) {
                    mismatches.push_back(QStringLiteral("not on the progress screen"));
                }
                if (shown.empty() || shown.back() != report.scan.stage) {
                    shown.push_back(report.scan.stage);
                }
                if (progress->stageText() != qtText(rawValue(report.scan.stage))) {
                    mismatches.push_back(progress->stageText());
                }
                if (progress->countText(QStringLiteral("Examined")) !=
                        QString::number(report.scan.examined) ||
                    progress->countText(QStringLiteral("Skipped")) !=
                        QString::number(report.scan.skipped) ||
                    progress->countText(QStringLiteral("Matched")) !=
                        QString::number(report.scan.matched)) {
                    mismatches.push_back(QStringLiteral("counts"));
                }
                // A known total fills the bar; otherwise it is a busy bar.
                int maximum = report.total.value_or(0);
                if (progress->bar()->maximum() != maximum ||
                    (report.total && progress->bar()->value() != report.done)) {
                    mismatches.push_back(QStringLiteral("bar"));
                }
            });
    QTest::mouseClick(w.window.home()->scanButton(), Qt::LeftButton);
    QCOMPARE(w.window.currentScreen(), progress);
    QVERIFY(progress->elapsedText().startsWith(QStringLiteral("Elapsed 0:")));
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);

    QCOMPARE(mismatches, QStringList());
    QCOMPARE(shown, (std::vector<Stage>{Stage::preparing, Stage::discovering, Stage::reading,
                                        Stage::comparing, Stage::verifying, Stage::measuring,
                                        Stage::checkingFaces, Stage::finishing}));
    QCOMPARE(progress->countText(QStringLiteral("Skipped")), QStringLiteral("3"));
    QCOMPARE(w.window.currentScreen(), w.window.overview());
}

void ScreensTest::overviewShowsWhatTheResultHolds() {
    WindowFixture w;
    PhotoCleanupModel& model = w.fixture.model();
    OverviewScreen* overview = w.window.overview();
    model.setSources({library_->root()});
    model.setMode(Mode::similar);
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(w.window.currentScreen(), overview);

    QCOMPARE(overview->headline(), QStringLiteral("Overview"));
    QCOMPARE(overview->groupsFigure(), QStringLiteral("6"));
    std::int64_t freed = freedOnDisk(model.groups());
    QVERIFY(freed > 0);
    QCOMPARE(overview->bytesFigure(), byteText(freed));
    QCOMPARE(overview->kindLine(MatchKind::similar),
             QStringLiteral("6 groups · 15 pictures · %1 to free").arg(byteText(freed)));
    QCOMPARE(overview->kindLine(MatchKind::identical), QString());
    // The PSD Linux cannot decode could be a copy of another: the scan is
    // incomplete (the empty and the damaged file could not).
    QVERIFY(overview->showsIncompleteNotice());

    LeftOutList* leftOut = overview->leftOut();
    QCOMPARE(leftOut->count(), 3);
    QCOMPARE(leftOut->title(0), qtText(title(SkipReason::unsupportedFormat)));
    QCOMPARE(leftOut->explanation(0), qtText(explanation(SkipReason::unsupportedFormat)));
    QCOMPARE(leftOut->title(1), qtText(title(SkipReason::corrupt)));
    QCOMPARE(leftOut->title(2), qtText(title(SkipReason::empty)));
    QCOMPARE(leftOut->explanation(2), qtText(explanation(SkipReason::empty)));
    QVERIFY(leftOut->shownLines(0).isEmpty());
    leftOut->setOpen(0, true);
    QCOMPARE(
        leftOut->shownLines(0),
        QStringList{QStringLiteral("%1 — PSD").arg(qtText(library_->path("Others/layers.psd")))});
    // View > Show Skipped Files opens the first reason.
    leftOut->setOpen(2, false);
    w.window.action(QStringLiteral("Show Skipped Files"))->trigger();
    QVERIFY(leftOut->isOpen(0));

    // The preset chooser regroups the result in place.
    QComboBox* preset = overview->presetChoice();
    QVERIFY(preset->isVisibleTo(overview));
    preset->setCurrentIndex(static_cast<int>(SimilarityPreset::conservative));
    Q_EMIT preset->activated(preset->currentIndex());
    QTRY_COMPARE_WITH_TIMEOUT(overview->groupsFigure(), QStringLiteral("3"), kScanTimeoutMs);
    QCOMPARE(overview->bytesFigure(), byteText(freedOnDisk(model.groups())));
    QCOMPARE(w.fixture.calls().measures.load(), 1);

    // Review leads on to the groups; New Scan goes home.
    QVERIFY(overview->reviewButton()->isEnabled());
    QTest::mouseClick(overview->newScanButton(), Qt::LeftButton);
    QCOMPARE(w.window.currentScreen(), w.window.home());
}

void ScreensTest::cancelLeadsBackHomeWithANotice() {
    // The engine reads a small library faster than the window hears of
    // it: without the hold, the cancel could come after measuring began.
    WindowFixture w(holdReadingUntilCancelled);
    PhotoCleanupModel& model = w.fixture.model();
    model.setSources({library_->root()});
    model.setMode(Mode::similar);
    QObject context;
    connect(&model, &PhotoCleanupModel::progressChanged, &context,
            [&](const ModelProgress& report) {
                if (report.scan.stage == Stage::reading) {
                    QTest::mouseClick(w.window.progressScreen()->cancelButton(), Qt::LeftButton);
                }
            });
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::idle, kScanTimeoutMs);
    QCOMPARE(w.window.currentScreen(), w.window.home());
    QCOMPARE(w.window.home()->noticeText(), QLatin1String(texts::kScanCancelled));
    QCOMPARE(w.fixture.calls().measures.load(), 0);
}

void ScreensTest::homeChoosesAndScansALightroomCatalog() {
    using Scope = CleanupSettings::Scope;
    TempTree tree;
    // Two catalogs, the second changed more recently; a folder without any.
    std::string older = tree.path("Lightroom/Old.lrcat");
    std::string newer = tree.path("Lightroom/Family.lrcat");
    {
        brevant::testing::LightroomCatalogFixture old(older);
        brevant::testing::LightroomCatalogFixture family(newer);
        for (const char* picture : {"Holidays/IMG_1001.JPG", "Backup/IMG_1001.JPG",
                                    "Holidays/IMG_1002.JPG", "Others/IMG_3001.JPG"}) {
            family.addPhotoAt(library_->path(picture));
        }
        family.close();
        old.close();
    }
    struct timeval past[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    QCOMPARE(::utimes(older.c_str(), past), 0);
    std::string empty = tree.folder("Empty");

    WindowFixture w;
    PhotoCleanupModel& model = w.fixture.model();
    HomeScreen* home = w.window.home();
    clickChoice(home->scopeButton(Scope::of(CatalogApplication::lightroom)));
    QCOMPARE(model.settings().scope, Scope::of(CatalogApplication::lightroom));
    QVERIFY(!home->scanButton()->isEnabled());

    // The search of the default folder the click started is overtaken.
    QSignalSpy searched(&model, &PhotoCleanupModel::catalogChanged);
    model.findCatalog(Scope::of(CatalogApplication::lightroom), empty);
    QTRY_COMPARE(searched.count(), 1);
    QCOMPARE(home->catalogNoticeText(Scope::of(CatalogApplication::lightroom)),
             QStringLiteral("There is no Lightroom Classic catalog (.lrcat) in %1. Choose the "
                            "folder the catalog file is in.")
                 .arg(qtText(empty)));
    QCOMPARE(home->catalogText(Scope::of(CatalogApplication::lightroom)),
             QStringLiteral("No catalog chosen yet."));
    QVERIFY(!home->scanButton()->isEnabled());

    model.findCatalog(Scope::of(CatalogApplication::lightroom), tree.path("Lightroom"));
    QTRY_COMPARE(searched.count(), 2);
    QCOMPARE(home->catalogNoticeText(Scope::of(CatalogApplication::lightroom)),
             QStringLiteral("This folder holds 2 catalogs; using Family.lrcat, the most recently "
                            "changed."));
    QCOMPARE(home->catalogText(Scope::of(CatalogApplication::lightroom)),
             QStringLiteral("Catalog: %1").arg(qtText(newer)));
    QCOMPARE(model.settings().catalogs.at(CatalogApplication::lightroom), newer);
    QCOMPARE(model.settings().catalogFolders.at(CatalogApplication::lightroom),
             std::vector<std::string>{tree.path("Lightroom")});
    QVERIFY(home->scanButton()->isEnabled());
    QCOMPARE(home->summaryText(), QStringLiteral("Looks for identical copies in Family.lrcat."));

    // Only the files the catalog lists are compared.
    QTest::mouseClick(home->scanButton(), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(model.groups().size(), std::size_t{1});
    QCOMPARE(memberNames(model.groups().front(), library_->root()),
             (std::vector<std::string>{"Backup/IMG_1001.JPG", "Holidays/IMG_1001.JPG"}));
    QVERIFY(model.groups().front().members.front().catalog.hasValue());
    QCOMPARE(model.result().examined, 4);

    // A catalog that cannot be read is said so, and nothing is scanned.
    model.returnHome();
    std::string broken = tree.file("Broken/Broken.lrcat", "not a database");
    model.findCatalog(Scope::of(CatalogApplication::lightroom), tree.path("Broken"));
    QTRY_COMPARE(model.settings().catalogs.at(CatalogApplication::lightroom), broken);
    QSignalSpy failed(&model, &PhotoCleanupModel::scanFailed);
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(failed.count(), 1, kScanTimeoutMs);
    QCOMPARE(model.phase(), Phase::idle);
    QVERIFY(home->noticeText().startsWith(QStringLiteral("The catalog could not be read")));
    QCOMPARE(home->noticeText(), failed.front().front().toString());
}

BREVANT_GUI_TEST(ScreensTest);

} // namespace brevant::gui::testing

#include "ScreensTest.moc"
