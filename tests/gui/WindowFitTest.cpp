#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/CompareView.hpp"
#include "app/gui/LeftOutList.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/MemberTile.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/PictureView.hpp"
#include "app/gui/ReviewScreen.hpp"
#include "app/gui/Skins.hpp"
#include "app/gui/ThumbnailLoader.hpp"
#include "engine/review/ReviewSession.hpp"

#include <QApplication>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>

namespace brevant::gui::testing {

namespace {

using Mode = CleanupSettings::Mode;
using Phase = PhotoCleanupModel::Phase;

constexpr int kScanTimeoutMs = 240'000;
// The narrowest screen the window must fit.
constexpr int kSmallScreenWidth = 1024;

// A window over the sample library, scanned in the mode.
struct ScannedWindow {
    SampleLibrary library;
    ModelFixture fixture;
    Skins skins;
    MainWindow window{fixture.model(), skins, fixture.store()};

    explicit ScannedWindow(bool withSkippedFiles = false) {
        if (withSkippedFiles) {
            library.addSkippedFiles();
        }
        fixture.model().setSources({library.root()});
        window.show();
    }

    bool scan(Mode mode) {
        PhotoCleanupModel& model = fixture.model();
        model.setMode(mode);
        return model.startScan() &&
               QTest::qWaitFor([&model] { return model.phase() == Phase::reviewing; },
                               kScanTimeoutMs);
    }
};

// A copy in the result only; the file is never read.
PhotoAsset copyAt(const std::string& folder, int inode) {
    PhotoAsset asset;
    asset.path = "/photos/" + folder + "/IMG_1003.JPG";
    asset.root = "/photos";
    asset.snapshot = {.identity = {.device = 1, .inode = static_cast<std::uint64_t>(inode)},
                      .size = 4'000'000,
                      .modifiedSeconds = 1'700'000'000,
                      .linkCount = 1,
                      .isRegularFile = true};
    asset.format = PhotoFormat::jpeg;
    asset.pixelWidth = 4000;
    asset.pixelHeight = 3000;
    return asset;
}

} // namespace

class WindowFitTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void marksCarriedIntoAnotherModeAreSaid();
    void enterInTheSkippedFilesOpensTheReview();
    void everyScreenFitsASmallScreen();
    void fiveCopiesShowWithoutScrolling();
};

void WindowFitTest::marksCarriedIntoAnotherModeAreSaid() {
    ScannedWindow w;
    PhotoCleanupModel& model = w.fixture.model();
    QVERIFY(w.scan(Mode::identical));
    QVERIFY(model.session()->markAllSuggested() > 0);
    model.noteMarksChanged();
    QCOMPARE(model.marksFromOtherMode(), 0);

    w.window.overview()->newScanButton()->click();
    QVERIFY(w.scan(Mode::similar));
    int carried = model.marksFromOtherMode();
    QVERIFY(carried > 0);
    QCOMPARE(static_cast<std::size_t>(carried), model.session()->marks().size());
    w.window.showReview();
    QCOMPARE(w.window.review()->noticeText(),
             QStringLiteral("%1 in the previous scan stay marked here.")
                 .arg(carried == 1 ? QStringLiteral("1 copy marked")
                                   : QStringLiteral("%1 copies marked").arg(carried)));

    // The same mode again says nothing.
    w.window.overview()->newScanButton()->click();
    QVERIFY(w.scan(Mode::similar));
    QCOMPARE(model.marksFromOtherMode(), 0);
    w.window.showReview();
    QCOMPARE(w.window.review()->noticeText(), QString());
}

void WindowFitTest::enterInTheSkippedFilesOpensTheReview() {
    ScannedWindow w(true);
    w.window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&w.window));
    QVERIFY(w.scan(Mode::identical));
    OverviewScreen* overview = w.window.overview();
    QCOMPARE(w.window.currentScreen(), overview);
    auto* header = overview->leftOut()->findChild<QToolButton*>();
    QVERIFY(header != nullptr);
    header->setFocus();
    QCOMPARE(QApplication::focusWidget(), header);
    QTest::keyClick(header, Qt::Key_Return);
    QCOMPARE(w.window.currentScreen(), w.window.review());
}

void WindowFitTest::everyScreenFitsASmallScreen() {
    ScannedWindow w(true);
    QVERIFY(w.window.minimumSizeHint().width() <= kSmallScreenWidth);
    QVERIFY(w.scan(Mode::similar));
    QVERIFY2(w.window.minimumSizeHint().width() <= kSmallScreenWidth,
             qPrintable(QString::number(w.window.minimumSizeHint().width())));
    w.window.showReview();
    ReviewScreen* review = w.window.review();
    review->setInspectorShown(true);
    for (int group = 0; group < static_cast<int>(w.fixture.model().groups().size()); ++group) {
        review->showGroup(group);
        QCoreApplication::processEvents();
        QVERIFY2(w.window.minimumSizeHint().width() <= kSmallScreenWidth,
                 qPrintable(QString::number(w.window.minimumSizeHint().width())));
    }
}

void WindowFitTest::fiveCopiesShowWithoutScrolling() {
    ThumbnailLoader thumbnails;
    CompareView view(thumbnails);
    // The room the pictures have at the window's first size, 1080 × 780,
    // with the inspector hidden.
    view.resize(780, 600);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    std::vector<PhotoAsset> copies;
    for (const char* folder : {"Camera card", "Laptop/Holiday 2018", "Backup/2018/July",
                               "Phone export", "NAS/Pictures/Phone"}) {
        copies.push_back(copyAt(folder, static_cast<int>(copies.size()) + 1));
    }
    view.showGroup(DuplicateGroup::make("", 0, copies, MatchKind::identical));
    std::vector<MemberFacts> facts(copies.size());
    facts[0] = {.isKeeper = true,
                .keeperReason = QStringLiteral("All copies are equal; the first by name is "
                                               "suggested.")};
    facts[3].isMarked = true;
    view.setFacts(facts);
    QCoreApplication::processEvents();
    QTest::qWait(50);
    auto* scroll = view.findChild<QScrollArea*>();
    QVERIFY(scroll != nullptr);
    QString sizes = QStringLiteral("viewport %1×%2;")
                        .arg(scroll->viewport()->width())
                        .arg(scroll->viewport()->height());
    for (int i = 0; i < view.count(); ++i) {
        sizes += QStringLiteral(" tile %1×%2 at %3,%4 min %5 picture %6")
                     .arg(view.tile(i)->width())
                     .arg(view.tile(i)->height())
                     .arg(view.tile(i)->x())
                     .arg(view.tile(i)->y())
                     .arg(view.tile(i)->minimumSizeHint().height())
                     .arg(view.tile(i)->view()->height());
    }
    QVERIFY2(!scroll->verticalScrollBar()->isVisible(), qPrintable(sizes));
    for (int i = 0; i < view.count(); ++i) {
        MemberTile* tile = view.tile(i);
        QVERIFY2(tile->visibleRegion().boundingRect() == tile->rect(),
                 qPrintable(QString::number(i)));
        QVERIFY(tile->view()->height() >= 100);
    }
}

BREVANT_GUI_TEST(WindowFitTest);

} // namespace brevant::gui::testing

#include "WindowFitTest.moc"
