#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/CatalogMarkingCard.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/MarkingsWindow.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/Skins.hpp"
#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"
#include "engine/cleanup/ChangeLock.hpp"
#include "engine/platform/DataFolder.hpp"

#include <QAction>
#include <QDesktopServices>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <filesystem>
#include <fmt/format.h>
#include <set>

namespace brevant::gui::testing {

namespace {

using brevant::testing::CaptureOneCatalogFixture;
using brevant::testing::fileDigest;
using brevant::testing::LightroomCatalogFixture;
using brevant::testing::ScopedEnvironment;
using brevant::testing::SQLiteFile;
using Phase = PhotoCleanupModel::Phase;
using Scope = CleanupSettings::Scope;
using State = CatalogMarkingCard::State;

constexpr int kScanTimeoutMs = 240'000;

// A window over a model whose data folder is also the process's, as the
// program has it.
struct WindowFixture {
    ModelFixture fixture;
    ScopedEnvironment dataDir{"BREVANT_DATA_DIR", fixture.dataFolder()};
    ScopedEnvironment dataHome{"XDG_DATA_HOME", fixture.dataFolder() + "/share"};
    Skins skins;
    MainWindow window{fixture.model(), skins, fixture.store()};

    WindowFixture() {
        window.show();
        (void)QTest::qWaitForWindowExposed(&window);
    }

    // Scans the chosen catalog and marks the suggested copies.
    std::set<std::string> scanAndMarkSuggested() {
        PhotoCleanupModel& model = fixture.model();
        if (!model.startScan()) {
            return {};
        }
        if (!QTest::qWaitFor([&model] { return model.phase() == Phase::reviewing; },
                             kScanTimeoutMs)) {
            return {};
        }
        model.session()->markAllSuggested();
        return model.session()->marks();
    }

    CatalogMarkingCard* openCard() {
        QAction* action = window.action(catalog_texts::command(fixture.model().settings().scope));
        if (action == nullptr || !action->isVisible() || !action->isEnabled()) {
            return nullptr;
        }
        action->trigger();
        return window.catalogMarkingCard();
    }
};

// Catches what the window asks the desktop to open.
class UrlCatcher : public QObject {
    Q_OBJECT

public:
    UrlCatcher() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }

    UrlCatcher(const UrlCatcher&) = delete;
    UrlCatcher& operator=(const UrlCatcher&) = delete;
    UrlCatcher(UrlCatcher&&) = delete;
    UrlCatcher& operator=(UrlCatcher&&) = delete;

    ~UrlCatcher() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QList<QUrl> opened;

public Q_SLOTS:

    void open(const QUrl& url) { opened.push_back(url); }
};

// Two copies of one photo, three of another and a photo of its own, as
// files beside a catalog that lists them.
struct Photos {
    TempTree tree;
    std::string a = brevant::testing::writeScene(tree.path("Photos/a.jpg"), 64, 48, 1);
    std::string b = tree.file("Photos/Copies/b.jpg", brevant::testing::readFile(a));
    std::string c = brevant::testing::writeScene(tree.path("Photos/c.jpg"), 64, 48, 2);
    std::string d = tree.file("Photos/Copies/d.jpg", brevant::testing::readFile(c));
    std::string e = tree.file("Photos/Copies/Old/e.jpg", brevant::testing::readFile(c));
    std::string f = brevant::testing::writeScene(tree.path("Photos/f.jpg"), 64, 48, 3);
};

// Every photo's flag exactly as stored, value and type.
std::string picks(const std::string& catalog) {
    SQLiteFile db(catalog);
    return db.value("SELECT group_concat(id_local || '=' || quote(pick) || ':' || typeof(pick), "
                    "' ') FROM (SELECT * FROM Adobe_images ORDER BY id_local)");
}

double pickOf(const std::string& catalog, const std::string& path) {
    SQLiteFile db(catalog);
    std::string name = std::filesystem::path(path).filename().string();
    return std::stod(db.value(fmt::format(
        "SELECT i.pick FROM Adobe_images i JOIN AgLibraryFile f ON f.id_local = i.rootFile "
        "WHERE f.idx_filename = {}",
        brevant::testing::sqlText(name))));
}

} // namespace

class CatalogMarkingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lightroomMarkingAndUndoFromTheWindow();
    void refusedMarkingLeavesTheCatalogAlone();
    void captureOneTaggingAndUndo();
    void untestedVersionIsToldBeforeMarking();
    void photosAlreadyMarkedAreCounted();
};

void CatalogMarkingTest::lightroomMarkingAndUndoFromTheWindow() {
    Photos photos;
    std::string catalog = photos.tree.path("Lightroom/Family.lrcat");
    {
        LightroomCatalogFixture fixture(catalog);
        fixture.addPhotoAt(photos.a);
        fixture.addPhotoAt(photos.b, {.pick = 1});
        fixture.addPhotoAt(photos.c);
        fixture.addPhotoAt(photos.d, {.pick = 1});
        fixture.addPhotoAt(photos.e);
        fixture.addPhotoAt(photos.f, {.pick = 1});
        fixture.close();
    }
    const std::string before = picks(catalog);

    WindowFixture w;
    PhotoCleanupModel& model = w.fixture.model();
    QAction* markAction = w.window.action(QStringLiteral("Mark Rejected in Lightroom Classic…"));
    QVERIFY(markAction != nullptr);
    QVERIFY(!markAction->isVisible());
    model.setScope(Scope::of(CatalogApplication::lightroom));
    model.setCatalog(CatalogApplication::lightroom, catalog, photos.tree.path("Lightroom"));
    QVERIFY(markAction->isVisible());

    // Nothing marked yet: the card says why there is nothing to confirm.
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    CatalogMarkingCard* card = w.openCard();
    QVERIFY(card != nullptr);
    QCOMPARE(card->state(), State::unplannable);
    QVERIFY(!card->noticeText().isEmpty());
    QVERIFY(!card->confirmButton()->isEnabled());
    QTest::mouseClick(card->closeButton(), Qt::LeftButton);
    QTRY_VERIFY(w.window.catalogMarkingCard() == nullptr);

    model.session()->markAllSuggested();
    const std::set<std::string> marks = model.session()->marks();
    QCOMPARE(marks.size(), std::size_t{3});
    card = w.openCard();
    QVERIFY(card != nullptr);
    QCOMPARE(card->windowTitle(), QStringLiteral("Mark Rejected in Lightroom Classic…"));
    QCOMPARE(card->state(), State::ready);
    QCOMPARE(card->plannedCount(), 3);
    QCOMPARE(card->confirmButton()->text(), QStringLiteral("Mark Rejected"));
    QSignalSpy finished(card, &CatalogMarkingCard::markingFinished);
    QTest::mouseClick(card->confirmButton(), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kScanTimeoutMs);
    QCOMPARE(card->state(), State::marked);
    QVERIFY(card->confirmButton()->isHidden());
    QCOMPARE(card->closeButton()->text(), QStringLiteral("Done"));

    // Exactly the marked photos are Rejected; the others keep their flags.
    for (const std::string& path : {photos.a, photos.b, photos.c, photos.d, photos.e, photos.f}) {
        double pick = pickOf(catalog, path);
        QCOMPARE(pick < 0, marks.contains(path));
    }
    const QStringList result = card->resultText().split(QLatin1Char('\n'));
    QCOMPARE(result.front(), QStringLiteral("Marked 3 photos Rejected in Lightroom Classic."));
    QCOMPARE(result.back(), qtText(LightroomRejecter::kFreedNothing));
    const QString& backupLine = result.at(result.size() - 2);
    QVERIFY(backupLine.startsWith(QStringLiteral("Backup: ")));
    const std::string backup = pathBytes(backupLine.mid(8));
    QVERIFY(std::filesystem::is_regular_file(backup));
    QCOMPARE(std::filesystem::path(backup).parent_path().filename().string(),
             std::string("Brevant Backups"));
    QTest::mouseClick(card->closeButton(), Qt::LeftButton);

    // The record is in the model's data folder and listed with its backup.
    QVERIFY(!std::filesystem::is_empty(w.fixture.dataFolder() + "/Markings/Lightroom Classic"));
    w.window.action(QStringLiteral("Markings and Taggings…"))->trigger();
    MarkingsWindow* markings = w.window.markingsWindow();
    QVERIFY(markings->isVisible());
    QCOMPARE(markings->count(), 1);
    const QStringList lines = markings->lines(0);
    QCOMPARE(lines.at(0), QStringLiteral("Lightroom Classic — Family.lrcat"));
    QVERIFY(lines.at(1).endsWith(QStringLiteral(" · 3 photos marked Rejected")));
    QCOMPARE(lines.at(2), QStringLiteral("Catalog: %1").arg(qtText(catalog)));
    QCOMPARE(lines.at(3), backupLine);
    QCOMPARE(lines.at(4), qtText(LightroomRejecter::kFreedNothing));
    QCOMPARE(markings->noteText(0), qtText(LightroomRejecter::kUndoNote));
    {
        UrlCatcher catcher;
        QTest::mouseClick(markings->backupButton(0), Qt::LeftButton);
        QCOMPARE(catcher.opened.size(), 1);
        QCOMPARE(pathBytes(catcher.opened.front().toLocalFile()),
                 std::filesystem::path(backup).parent_path().string());
    }

    // Undo gives every photo its flag back, stored exactly as before.
    QSignalSpy undone(markings, &MarkingsWindow::undoFinished);
    QTest::mouseClick(markings->undoButton(0), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(undone.count(), 1, kScanTimeoutMs);
    QCOMPARE(markings->statusText(0), QStringLiteral("The photos have their earlier flags back."));
    QCOMPARE(markings->undoButton(0)->text(), QStringLiteral("Undone"));
    QVERIFY(!markings->undoButton(0)->isEnabled());
    QVERIFY(markings->lines(0).at(1).endsWith(QStringLiteral(" · undone")));
    QCOMPARE(markings->noteText(0), QString());
    QCOMPARE(markings->lines(0).size(), 4);
    QCOMPARE(QString::fromStdString(picks(catalog)), QString::fromStdString(before));
}

void CatalogMarkingTest::refusedMarkingLeavesTheCatalogAlone() {
    Photos photos;
    std::string catalog = photos.tree.path("Lightroom/Family.lrcat");
    {
        LightroomCatalogFixture fixture(catalog);
        for (const auto& path : {photos.a, photos.b, photos.c, photos.d}) {
            fixture.addPhotoAt(path);
        }
        fixture.close();
    }
    WindowFixture w;
    PhotoCleanupModel& model = w.fixture.model();
    model.setScope(Scope::of(CatalogApplication::lightroom));
    model.setCatalog(CatalogApplication::lightroom, catalog, photos.tree.path("Lightroom"));
    QCOMPARE(w.scanAndMarkSuggested().size(), std::size_t{2});

    // Lightroom holds its lock file while the catalog is open.
    std::string lock = photos.tree.file("Lightroom/Family.lrcat.lock", "");
    const std::string digest = fileDigest(catalog);
    CatalogMarkingCard* card = w.openCard();
    QVERIFY(card != nullptr);
    QSignalSpy finished(card, &CatalogMarkingCard::markingFinished);
    QTest::mouseClick(card->confirmButton(), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kScanTimeoutMs);
    QCOMPARE(card->state(), State::refused);
    QCOMPARE(card->noticeText(), QStringLiteral("Quit Lightroom Classic first. Its catalog is only "
                                                "changed while Lightroom is closed."));
    QCOMPARE(card->resultText(), QString());
    QCOMPARE(fileDigest(catalog), digest);
    QVERIFY(!std::filesystem::exists(photos.tree.path("Lightroom/Brevant Backups")));
    w.window.showMarkings();
    QCOMPARE(w.window.markingsWindow()->count(), 0);
    QVERIFY(!w.window.markingsWindow()->emptyText().isEmpty());

    // Lightroom closed, but another Brevant run is changing things: the
    // marking waits for none and changes nothing.
    std::filesystem::remove(lock);
    {
        auto other = ChangeLock::tryTake(platform::DataFolder{w.fixture.dataFolder()});
        QVERIFY(other.has_value());
        QVERIFY(card->confirmButton()->isEnabled());
        QTest::mouseClick(card->confirmButton(), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 2, kScanTimeoutMs);
        QCOMPARE(card->state(), State::refused);
        QVERIFY2(card->noticeText().startsWith(
                     QStringLiteral("Another Brevant run is changing pictures or Brevant\u2019s "
                                    "records")),
                 qPrintable(card->noticeText()));
        QCOMPARE(fileDigest(catalog), digest);
    }

    // Once it has finished the same card can mark.
    QVERIFY(card->confirmButton()->isEnabled());
    QTest::mouseClick(card->confirmButton(), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 3, kScanTimeoutMs);
    QCOMPARE(card->state(), State::marked);
    QCOMPARE(card->noticeText(), QString());
    QCOMPARE(w.window.markingsWindow()->count(), 1);
}

void CatalogMarkingTest::captureOneTaggingAndUndo() {
    Photos photos;
    std::string package = photos.tree.path("Capture One/Family.cocatalog");
    std::string database;
    {
        CaptureOneCatalogFixture fixture(package);
        database = fixture.databasePath();
        fixture.addImageAt(photos.a);
        fixture.addImageAt(photos.b, {.colorTag = std::nullopt, .lastModified = 700'000'000.5});
        fixture.addImageAt(photos.f);
        fixture.close();
    }
    auto tags = [&database] {
        SQLiteFile db(database);
        return db.value("SELECT group_concat(Z_PK || '=' || quote(ZCOLOR_TAG_INDEX), ' ') FROM "
                        "(SELECT * FROM ZVARIANTMETADATA ORDER BY Z_PK)") +
               " | " +
               db.value("SELECT group_concat(Z_PK || '=' || quote(ZLASTMETADATAMODIFICATIONDATE), "
                        "' ') FROM (SELECT * FROM ZVARIANT ORDER BY Z_PK)");
    };
    const std::string before = tags();

    WindowFixture w;
    PhotoCleanupModel& model = w.fixture.model();
    model.setScope(Scope::of(CatalogApplication::captureOne));
    model.setCatalog(CatalogApplication::captureOne, package, photos.tree.path("Capture One"));
    QCOMPARE(w.scanAndMarkSuggested().size(), std::size_t{1});
    CatalogMarkingCard* card = w.openCard();
    QVERIFY(card != nullptr);
    QCOMPARE(card->windowTitle(), QStringLiteral("Tag Red in Capture One…"));
    QCOMPARE(card->confirmButton()->text(), QStringLiteral("Tag Red"));
    QSignalSpy finished(card, &CatalogMarkingCard::markingFinished);
    QTest::mouseClick(card->confirmButton(), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, kScanTimeoutMs);
    QCOMPARE(card->state(), State::marked);
    const QStringList result = card->resultText().split(QLatin1Char('\n'));
    QCOMPARE(result.front(), QStringLiteral("Tagged 1 photo Red in Capture One."));
    QCOMPARE(result.back(), qtText(CaptureOneMarker::kFinishNote));
    {
        SQLiteFile db(database);
        QCOMPARE(db.value("SELECT count(*) FROM ZVARIANTMETADATA WHERE ZCOLOR_TAG_INDEX = 1"),
                 std::string("2"));
    }

    w.window.showMarkings();
    MarkingsWindow* markings = w.window.markingsWindow();
    QCOMPARE(markings->count(), 1);
    QCOMPARE(markings->lines(0).at(0), QStringLiteral("Capture One — Family.cocatalog"));
    QVERIFY(markings->lines(0).at(1).endsWith(QStringLiteral(" · 1 photo tagged Red")));
    QCOMPARE(markings->lines(0).at(4), qtText(CaptureOneMarker::kFinishNote));
    QCOMPARE(markings->noteText(0), qtText(CaptureOneMarker::kUndoNote));
    QSignalSpy undone(markings, &MarkingsWindow::undoFinished);
    QTest::mouseClick(markings->undoButton(0), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(undone.count(), 1, kScanTimeoutMs);
    QCOMPARE(markings->statusText(0), QStringLiteral("The Red tags were taken off again."));
    QCOMPARE(tags(), before);
}

void CatalogMarkingTest::untestedVersionIsToldBeforeMarking() {
    Photos photos;
    std::string catalog = photos.tree.path("Lightroom/Family.lrcat");
    {
        LightroomCatalogFixture fixture(catalog);
        fixture.setVersion("1504002");
        for (const auto& path : {photos.a, photos.b}) {
            fixture.addPhotoAt(path);
        }
        fixture.close();
    }
    const std::string digest = fileDigest(catalog);
    WindowFixture w;
    PhotoCleanupModel& model = w.fixture.model();
    model.setScope(Scope::of(CatalogApplication::lightroom));
    model.setCatalog(CatalogApplication::lightroom, catalog, photos.tree.path("Lightroom"));
    QCOMPARE(w.scanAndMarkSuggested().size(), std::size_t{1});

    // The overview says it first; the card says it again before confirming.
    const QString notice = QStringLiteral(
        "This Lightroom version is new to Brevant (its catalog is version 1504002): you can "
        "review its copies here, but Brevant marks nothing Rejected in a catalog version it has "
        "not been tested with.");
    QCOMPARE(w.window.overview()->catalogNotice(), notice);
    CatalogMarkingCard* card = w.openCard();
    QVERIFY(card != nullptr);
    QCOMPARE(card->state(), State::ready);
    QCOMPARE(card->noticeText(), notice);
    QVERIFY(!card->confirmButton()->isEnabled());
    QTest::keyClick(card, Qt::Key_Return);
    QCOMPARE(card->state(), State::ready);
    QCOMPARE(fileDigest(catalog), digest);

    // A tested version has no such notice.
    SQLiteFile(catalog).exec(
        "UPDATE Adobe_variablesTable SET value = '1504001' WHERE name = 'Adobe_DBVersion'");
    QVERIFY(model.startScan());
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(w.window.overview()->catalogNotice(), QString());
}

// Two photos of four are already on their way out in the catalog's own
// application, as the command line counts them.
void CatalogMarkingTest::photosAlreadyMarkedAreCounted() {
    const std::pair<Scope, QString> cases[] = {
        {Scope::of(CatalogApplication::lightroom),
         QStringLiteral("Already Rejected in Lightroom Classic: 2")},
        {Scope::of(CatalogApplication::captureOne),
         QStringLiteral("Already tagged Red in Capture One: 2")},
    };
    for (const auto& [scope, line] : cases) {
        Photos photos;
        WindowFixture w;
        PhotoCleanupModel& model = w.fixture.model();
        model.setScope(scope);
        if (scope == Scope::of(CatalogApplication::lightroom)) {
            std::string catalog = photos.tree.path("Lightroom/Family.lrcat");
            LightroomCatalogFixture fixture(catalog);
            fixture.addPhotoAt(photos.a);
            fixture.addPhotoAt(photos.b, {.pick = -1});
            fixture.addPhotoAt(photos.c, {.pick = -1});
            fixture.addPhotoAt(photos.f);
            fixture.close();
            model.setCatalog(CatalogApplication::lightroom, catalog, photos.tree.path("Lightroom"));
        } else {
            std::string package = photos.tree.path("Capture One/Family.cocatalog");
            CaptureOneCatalogFixture fixture(package);
            fixture.addImageAt(photos.a);
            fixture.addImageAt(photos.b, {.colorTag = 1});
            fixture.addImageAt(photos.c, {.colorTag = 1});
            fixture.addImageAt(photos.f);
            fixture.close();
            model.setCatalog(CatalogApplication::captureOne, package,
                             photos.tree.path("Capture One"));
        }

        QVERIFY(model.startScan());
        QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);

        OverviewScreen* overview = w.window.overview();
        QCOMPARE(overview->alreadyMarkedLine(), line);
        QCOMPARE(overview->catalogNotice(), QString());
    }
}

BREVANT_GUI_TEST(CatalogMarkingTest);

} // namespace brevant::gui::testing

#include "CatalogMarkingTest.moc"
