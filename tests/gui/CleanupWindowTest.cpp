#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TrashCli.hpp"
#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/CleanupCard.hpp"
#include "app/gui/CleanupController.hpp"
#include "app/gui/CleanupReportView.hpp"
#include "app/gui/CleanupScreen.hpp"
#include "app/gui/HistoryScreen.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/Skins.hpp"
#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/cleanup/ExecutorTexts.hpp"
#include "engine/cleanup/JournalTexts.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/platform/FreedesktopTrash.hpp"
#include "engine/support/PathNames.hpp"

#include <QAction>
#include <QApplication>
#include <QPushButton>
#include <QScopeGuard>
#include <QScreen>
#include <QSemaphore>
#include <QTest>
#include <QTreeWidget>

#include <atomic>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <map>
#include <memory>
#include <set>

namespace brevant::gui::testing {

namespace {

using brevant::testing::ScopedEnvironment;
using Phase = PhotoCleanupModel::Phase;

constexpr int kScanTimeoutMs = 240'000;
constexpr int kRunTimeoutMs = 60'000;

// Holds the first move until the test lets it go, so that the test can
// press Stop After This One while a picture is being moved.
class GatedTrasher final : public Trasher {
public:
    [[nodiscard]] std::expected<std::string, TrashError>
    reserve(const std::string& path) const override {
        return FileManagerTrasher().reserve(path);
    }

    [[nodiscard]] std::expected<void, TrashError>
    moveInto(const std::string& path, const std::string& trashPath) const override {
        if (calls_++ == 0) {
            entered_ = true;
            gate_.acquire();
        }
        return FileManagerTrasher().moveInto(path, trashPath);
    }

    [[nodiscard]] std::expected<void, TrashError>
    putBack(const std::string& trashPath, const std::string& destination) const override {
        return FileManagerTrasher().putBack(trashPath, destination);
    }

    [[nodiscard]] bool entered() const { return entered_; }

    void open() const { gate_.release(); }

private:
    mutable std::atomic<int> calls_ = 0;
    mutable std::atomic<bool> entered_ = false;
    mutable QSemaphore gate_;
};

void overwrite(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// A window over the sample library, scanned for identical copies, with its
// own data folder and Trash.
class Rig {
public:
    Rig()
        : dataHome_(tree_.folder("data-home"))
        , xdgDataHome_("XDG_DATA_HOME", dataHome_)
        , dataDir_("BREVANT_DATA_DIR", fixture_.dataFolder())
        , window_(fixture_.model(), skins_, fixture_.store()) {
        window_.show();
        window_.activateWindow();
        // A shortcut only reaches the active window.
        active_ = QTest::qWaitForWindowActive(&window_);
    }

    [[nodiscard]] MainWindow& window() { return window_; }

    [[nodiscard]] bool isActive() const { return active_; }

    [[nodiscard]] PhotoCleanupModel& model() { return fixture_.model(); }

    [[nodiscard]] CleanupController& cleanups() { return *window_.cleanups(); }

    [[nodiscard]] CleanupReportView* report() { return window_.cleanupScreen()->reportView(); }

    [[nodiscard]] std::string trashFiles() const { return dataHome_ + "/Trash/files"; }

    // More byte-for-byte copies of a library picture, in a folder of their
    // own; their paths.
    std::vector<std::string> addCopies(const std::string& relative, int count) {
        std::vector<std::string> paths;
        std::string original = brevant::testing::readFile(library_.path(relative));
        std::error_code error;
        std::filesystem::create_directories(library_.path("Extra"), error);
        for (int i = 0; i < count; ++i) {
            paths.push_back(library_.path(fmt::format("Extra/copy-{:02}.jpg", i)));
            overwrite(paths.back(), original);
        }
        return paths;
    }

    // Scans and marks every copy the suggestions do not keep; remembers the
    // bytes of the marked ones.
    bool scan() {
        model().setSources({library_.root()});
        model().setMode(CleanupSettings::Mode::identical);
        return model().startScan() &&
               QTest::qWaitFor([this] { return model().phase() == Phase::reviewing; },
                               kScanTimeoutMs) &&
               model().session() != nullptr;
    }

    bool scanAndMark() {
        if (!scan() || model().session()->markAllSuggested() == 0) {
            return false;
        }
        for (const auto& path : model().session()->marks()) {
            bytes_[path] = brevant::testing::readFile(path);
        }
        return true;
    }

    [[nodiscard]] const std::map<std::string, std::string>& marked() const { return bytes_; }

    // Opens the card from the keyboard and confirms it with Enter.
    bool confirmCard() {
        QTest::keyClick(&window_, Qt::Key_Delete, Qt::ControlModifier);
        CleanupCard* card = window_.cleanupCard();
        if (card == nullptr || !card->hasPlan()) {
            return false;
        }
        QTest::keyClick(card, Qt::Key_Return);
        return true;
    }

    bool runCleanup() {
        return scanAndMark() && confirmCard() &&
               QTest::qWaitFor([this] { return window_.cleanupScreen()->showsReport(); },
                               kRunTimeoutMs);
    }

private:
    TempTree tree_;
    std::string dataHome_;
    ScopedEnvironment xdgDataHome_;
    SampleLibrary library_;
    ModelFixture fixture_;
    ScopedEnvironment dataDir_;
    Skins skins_;
    MainWindow window_;
    std::map<std::string, std::string> bytes_;
    bool active_ = false;
};

} // namespace

class CleanupWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void menusOfferTheCleanupCommands();
    void cardShowsWhyNothingCanBePlanned();
    void runMovesExactlyTheMarkedCopiesAndReportsThem();
    void stopAfterThisOneLeavesTheRestInPlace();
    void refusedPlanMovesNothingAndSaysWhy();
    void interruptedCleanupIsReconciledAtStart();
    void putsBackOneItemAndTheWholeCleanup();
    void occupiedPlaceOffersAnotherNameAndNeverOverwrites();
    void keyboardAloneRunsACleanupAndPutsItBack();
    void resultsFollowACleanupAndAPutBack();
    void putBackOfManyPicturesKeepsTheWindowOnTheScreen();
    void overviewSaysEveryGroupWasCleanedUp();
};

void CleanupWindowTest::menusOfferTheCleanupCommands() {
    ModelFixture fixture;
    Skins skins;
    MainWindow window(fixture.model(), skins, fixture.store());
    auto* review = window.findChild<QAction*>(QStringLiteral("reviewCleanup"));
    auto* history = window.findChild<QAction*>(QStringLiteral("historyOfCleanups"));
    QVERIFY(review != nullptr && history != nullptr);
    QCOMPARE(review->text(), QStringLiteral("Review && Move to Trash…"));
    QCOMPARE(review->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Delete));
    QCOMPARE(history->text().remove(QLatin1Char('&')), QStringLiteral("History of Cleanups…"));
    QCOMPARE(history->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_H));
    // Nothing to review before a scan; the history is always there.
    QVERIFY(!review->isEnabled());
    QVERIFY(history->isEnabled());
    window.showHistory();
    HistoryScreen* screen = window.historyScreen();
    QCOMPARE(window.currentScreen(), screen);
    QTRY_COMPARE(screen->status(), QStringLiteral("No cleanup has been run on this computer yet."));
    QCOMPARE(screen->list()->topLevelItemCount(), 0);
}

void CleanupWindowTest::cardShowsWhyNothingCanBePlanned() {
    Rig rig;
    QVERIFY(rig.scanAndMark());
    rig.model().session()->clearMarks(rig.model().session()->groups().front());
    rig.model().session()->clearMarks(rig.model().session()->groups().back());
    QVERIFY(rig.model().session()->marks().empty());
    rig.window().showCleanupCard();
    CleanupCard* card = rig.window().cleanupCard();
    QVERIFY(card != nullptr);
    QVERIFY(!card->hasPlan());
    QCOMPARE(card->errorText(), QStringLiteral("Nothing is marked."));
    QVERIFY(card->confirmButton() == nullptr);
}

void CleanupWindowTest::runMovesExactlyTheMarkedCopiesAndReportsThem() {
    Rig rig;
    QVERIFY(rig.isActive());
    QVERIFY(rig.scanAndMark());
    QCOMPARE(rig.marked().size(), std::size_t{2});
    std::int64_t bytes = 0;
    for (const auto& [path, contents] : rig.marked()) {
        bytes += static_cast<std::int64_t>(contents.size());
    }

    QTest::keyClick(&rig.window(), Qt::Key_Delete, Qt::ControlModifier);
    CleanupCard* card = rig.window().cleanupCard();
    QVERIFY(card != nullptr);
    QVERIFY(card->hasPlan());
    QCOMPARE(card->summary(), QStringLiteral("2 pictures · %1").arg(byteText(bytes)));
    QCOMPARE(card->trashPlaces(),
             QStringList{QStringLiteral("This computer: %1")
                             .arg(qtText(PathNames::parentFolder(rig.trashFiles())))});
    // Two groups, each keeping one copy and moving one.
    QTreeWidget* groups = card->groups();
    QCOMPARE(groups->topLevelItemCount(), 2);
    for (int i = 0; i < 2; ++i) {
        QTreeWidgetItem* group = groups->topLevelItem(i);
        QVERIFY2(group->text(0).contains(QStringLiteral("keeps 1 · moves 1 picture, ")),
                 qPrintable(group->text(0)));
        QCOMPARE(group->childCount(), 2);
        QCOMPARE(group->child(0)->text(0), QStringLiteral("Stays"));
        QCOMPARE(group->child(1)->text(0), QStringLiteral("Goes to Trash"));
        QVERIFY(rig.marked().contains(pathBytes(group->child(1)->toolTip(1))));
        QVERIFY(!rig.marked().contains(pathBytes(group->child(0)->toolTip(1))));
    }
    QTest::keyClick(card, Qt::Key_Return);
    QTRY_VERIFY_WITH_TIMEOUT(rig.window().cleanupScreen()->showsReport(), kRunTimeoutMs);
    QCOMPARE(rig.window().currentScreen(), rig.window().cleanupScreen());

    CleanupReportView* report = rig.report();
    QCOMPARE(report->title(), QStringLiteral("Cleanup finished"));
    QCOMPARE(report->explanation(), QString());
    QCOMPARE(report->figure(QStringLiteral("Moved")), QStringLiteral("2"));
    QCOMPARE(report->figure(QStringLiteral("Skipped")), QStringLiteral("0"));
    QCOMPARE(report->figure(QStringLiteral("Failed")), QStringLiteral("0"));
    QCOMPARE(report->figure(QStringLiteral("Unknown")), QStringLiteral("0"));
    QCOMPARE(report->figure(QStringLiteral("In the Trash")), byteText(bytes));
    QCOMPARE(report->generalNote(), QStringLiteral("Space is freed when you empty the Trash. An "
                                                   "emptied Trash cannot be undone by Brevant."));
    // Exactly the marked copies are in the Trash, byte for byte; their
    // kept copies stay.
    for (const auto& [path, contents] : rig.marked()) {
        QCOMPARE(report->outcomeText(report->row(path)), QStringLiteral("In the Trash."));
        QCOMPARE(fileSize(path), -1);
        std::string trashed = rig.trashFiles() + "/" + PathNames::lastComponent(path);
        QVERIFY(brevant::testing::readFile(trashed) == contents);
    }
    for (const auto& group : rig.model().session()->groups()) {
        for (const auto& member : group.members) {
            QCOMPARE(fileSize(member.path) >= 0, !rig.marked().contains(member.path));
        }
    }
    QVERIFY(rig.model().session()->marks().empty());
    if (auto missing = brevant::testing::trashCliMissing(); !missing) {
        std::string listed = brevant::testing::trashList();
        for (const auto& [path, contents] : rig.marked()) {
            QVERIFY2(listed.find(path) != std::string::npos, listed.c_str());
        }
    }
    // The report stays until the user is done with it; Done (Enter) goes
    // back to the results.
    QCOMPARE(rig.model().phase(), Phase::finished);
    QTest::keyClick(rig.window().cleanupScreen()->doneButton(), Qt::Key_Return);
    QCOMPARE(rig.model().phase(), Phase::reviewing);
    QCOMPARE(rig.window().currentScreen(), static_cast<QWidget*>(rig.window().overview()));
}

void CleanupWindowTest::stopAfterThisOneLeavesTheRestInPlace() {
    Rig rig;
    auto gate = std::make_shared<GatedTrasher>();
    rig.cleanups().setTrasher(gate);
    auto release = qScopeGuard([&gate] { gate->open(); });
    QVERIFY(rig.scanAndMark());
    QVERIFY(rig.confirmCard());
    QTRY_VERIFY_WITH_TIMEOUT(gate->entered(), kRunTimeoutMs);
    CleanupScreen* screen = rig.window().cleanupScreen();
    QVERIFY(screen->showsRun());
    // While pictures move, nothing may scan them or start another run.
    QCOMPARE(rig.model().phase(), Phase::cleaning);
    QVERIFY(!rig.model().canScan());
    QVERIFY(!rig.model().startScan());
    auto again = rig.cleanups().plan();
    QVERIFY(again.has_value());
    QVERIFY(!rig.cleanups().start(*again, CleanupApproval{again->id, Date::now()}));
    QTest::mouseClick(screen->stopButton(), Qt::LeftButton);
    QVERIFY(rig.cleanups().isStopping());
    QCOMPARE(screen->runDetail(),
             QStringLiteral("Stopping after this picture. The rest stay where they are."));
    QVERIFY(!screen->stopButton()->isEnabled());
    gate->open();
    QTRY_VERIFY_WITH_TIMEOUT(screen->showsReport(), kRunTimeoutMs);
    QCOMPARE(rig.model().phase(), Phase::finished);

    CleanupReportView* report = rig.report();
    QCOMPARE(report->figure(QStringLiteral("Moved")), QStringLiteral("1"));
    QCOMPARE(report->figure(QStringLiteral("Skipped")), QStringLiteral("1"));
    const CleanupReport& shown = *report->report();
    QCOMPARE(shown.items[0].outcome.kind, ItemOutcome::Kind::movedToTrash);
    QCOMPARE(report->outcomeText(1), qtText(executor_texts::kCancelled));
    const std::string& left = shown.items[1].removal.path;
    QVERIFY(brevant::testing::readFile(left) == rig.marked().at(left));
    QCOMPARE(fileSize(shown.items[0].removal.path), -1);
}

void CleanupWindowTest::refusedPlanMovesNothingAndSaysWhy() {
    Rig rig;
    QVERIFY(rig.scanAndMark());
    // A file where the journals' folder should be: no record, no move.
    overwrite(rig.cleanups().journalDirectory(), "not a folder");
    QVERIFY(rig.confirmCard());
    CleanupScreen* screen = rig.window().cleanupScreen();
    QTRY_VERIFY_WITH_TIMEOUT(screen->showsRefusal(), kRunTimeoutMs);
    QVERIFY(screen->refusalText().startsWith(
        QStringLiteral("The cleanup record could not be written, so nothing was moved: ")));
    for (const auto& [path, contents] : rig.marked()) {
        QVERIFY(brevant::testing::readFile(path) == contents);
    }
    QCOMPARE(rig.model().session()->marks().size(), rig.marked().size());
}

void CleanupWindowTest::interruptedCleanupIsReconciledAtStart() {
    Rig rig;
    QVERIFY(rig.scanAndMark());
    // A run that died after moving its first picture, before recording it.
    auto plan = CleanupPlanner::plan(*rig.model().session());
    QVERIFY(plan.has_value());
    QCOMPARE(plan->removals.size(), std::size_t{2});
    const std::string& first = plan->removals[0].path;
    {
        // The run's lock goes with its process.
        auto journal = CleanupJournal::create(*plan, rig.cleanups().journalDirectory());
        QVERIFY(journal.has_value());
        QVERIFY(journal->write(CleanupJournal::Entry::ofIntent(first, Date::now())).has_value());
        QVERIFY(platform::FreedesktopTrash::moveToTrash(first).has_value());
    }

    rig.window().recoverInterruptedCleanups();
    CleanupScreen* screen = rig.window().cleanupScreen();
    QTRY_VERIFY_WITH_TIMEOUT(screen->showsReport(), kRunTimeoutMs);
    QCOMPARE(rig.window().currentScreen(), screen);
    CleanupReportView* report = rig.report();
    QCOMPARE(report->title(), QStringLiteral("An earlier cleanup was interrupted"));
    QCOMPARE(report->explanation(),
             QStringLiteral("Brevant stopped while this cleanup was running. Each picture's "
                            "outcome below was worked out afterwards by looking where it is — "
                            "nothing was moved again."));
    QCOMPARE(report->outcomeText(0), QStringLiteral("In the Trash."));
    QCOMPARE(report->outcomeText(1), qtText(journal_texts::kNotAttempted));
    // The second picture was never touched, and the journal is closed now.
    const std::string& second = plan->removals[1].path;
    QVERIFY(brevant::testing::readFile(second) == rig.marked().at(second));
    auto parsed =
        CleanupJournal::parse(CleanupJournal::pathFor(plan->id, rig.cleanups().journalDirectory()));
    QVERIFY(parsed.has_value());
    QVERIFY(parsed->finished.has_value());
    // Shown like a finished cleanup's report, until the user is done.
    QCOMPARE(rig.model().phase(), Phase::finished);
    QTest::mouseClick(screen->doneButton(), Qt::LeftButton);
    QCOMPARE(rig.model().phase(), Phase::reviewing);
}

void CleanupWindowTest::putsBackOneItemAndTheWholeCleanup() {
    Rig rig;
    QVERIFY(rig.runCleanup());
    CleanupReportView* report = rig.report();
    const CleanupReport shown = *report->report();
    const std::string& first = shown.items[0].removal.path;
    const std::string& second = shown.items[1].removal.path;

    report->select({first});
    QVERIFY(report->putBackButton()->isEnabled());
    QTest::mouseClick(report->putBackButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.cleanups().isPuttingBack(), kRunTimeoutMs);
    QVERIFY(brevant::testing::readFile(first) == rig.marked().at(first));
    QCOMPARE(fileSize(second), -1);
    QCOMPARE(report->outcomeText(0), QStringLiteral("Put back where it was."));
    QCOMPARE(report->figure(QStringLiteral("Moved")), QStringLiteral("1"));
    QCOMPARE(report->figure(QStringLiteral("Put back")), QStringLiteral("1"));

    // The rest of the cleanup from its history. The card that was open
    // took the activation with it.
    rig.window().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&rig.window()));
    QTest::keyClick(&rig.window(), Qt::Key_H, Qt::ControlModifier);
    HistoryScreen* history = rig.window().historyScreen();
    QCOMPARE(rig.window().currentScreen(), history);
    QCOMPARE(history->caption(), QStringLiteral("Every Brevant run, with each picture's outcome. "
                                                "Kept on this computer only."));
    QTRY_COMPARE_WITH_TIMEOUT(history->list()->topLevelItemCount(), 1, kRunTimeoutMs);
    QCOMPARE(history->list()->topLevelItem(0)->text(2), QStringLiteral("1"));
    QTest::keyClick(history->list(), Qt::Key_Return);
    QVERIFY(history->showsReport());
    QPushButton* all = history->reportView()->putBackAllButton();
    QVERIFY(all->isEnabled());
    QTest::mouseClick(all, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.cleanups().isPuttingBack(), kRunTimeoutMs);
    for (const auto& [path, contents] : rig.marked()) {
        QVERIFY(brevant::testing::readFile(path) == contents);
    }
    QCOMPARE(history->reportView()->figure(QStringLiteral("Put back")), QStringLiteral("2"));
    QCOMPARE(history->reportView()->figure(QStringLiteral("In the Trash")), byteText(0));
    QVERIFY(!all->isEnabled());

    // A cleanup found interrupted has its report brought to the front, over
    // the history, while the finished run's report still waits for Done.
    QCOMPARE(rig.model().phase(), Phase::finished);
    Q_EMIT rig.cleanups().interruptedRecovered({shown});
    QCOMPARE(rig.window().currentScreen(), static_cast<QWidget*>(rig.window().cleanupScreen()));
    QVERIFY(rig.window().cleanupScreen()->showsReport());
}

void CleanupWindowTest::occupiedPlaceOffersAnotherNameAndNeverOverwrites() {
    Rig rig;
    QVERIFY(rig.runCleanup());
    CleanupReportView* report = rig.report();
    const std::string first = report->report()->items[0].removal.path;
    overwrite(first, "a new file in its place");

    report->select({first});
    QTest::mouseClick(report->putBackButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.cleanups().isPuttingBack(), kRunTimeoutMs);
    QCOMPARE(report->putBackMessage(),
             QStringLiteral("A file has taken this picture's place since it was moved. It is "
                            "never overwritten: put the picture back under another name, or use "
                            "your file manager."));
    QCOMPARE(brevant::testing::readFile(first), std::string("a new file in its place"));
    QCOMPARE(report->outcomeText(0), QStringLiteral("In the Trash."));
    // The refusal is noted under the picture.
    QCOMPARE(report->items()->topLevelItem(0)->childCount(), 1);
    QVERIFY(report->items()->topLevelItem(0)->child(0)->text(0).startsWith(
        QStringLiteral("Put Back refused ")));

    QVERIFY(report->anotherNameButton()->isVisible());
    std::string alternative = Restorer::alternativePath(first);
    QVERIFY(PathNames::lastComponent(alternative).find(" (restored).") != std::string::npos);
    QTest::mouseClick(report->anotherNameButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.cleanups().isPuttingBack(), kRunTimeoutMs);
    QVERIFY(brevant::testing::readFile(alternative) == rig.marked().at(first));
    QCOMPARE(brevant::testing::readFile(first), std::string("a new file in its place"));
    QCOMPARE(
        report->outcomeText(0),
        QStringLiteral("Put back as “%1”.").arg(qtText(PathNames::lastComponent(alternative))));
    QVERIFY(!report->anotherNameButton()->isVisible());
}

void CleanupWindowTest::keyboardAloneRunsACleanupAndPutsItBack() {
    Rig rig;
    QVERIFY(rig.isActive());
    QVERIFY(rig.runCleanup());
    QVERIFY(rig.report()->figure(QStringLiteral("Moved")) == QStringLiteral("2"));
    // Offscreen, a closed dialog leaves no window active; a desktop gives
    // the activation back to the window.
    rig.window().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&rig.window()));
    QCOMPARE(QApplication::focusWidget(), rig.window().cleanupScreen()->doneButton());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QCOMPARE(rig.window().currentScreen(), static_cast<QWidget*>(rig.window().overview()));

    QTest::keyClick(&rig.window(), Qt::Key_H, Qt::ControlModifier);
    HistoryScreen* history = rig.window().historyScreen();
    QTRY_COMPARE_WITH_TIMEOUT(history->list()->topLevelItemCount(), 1, kRunTimeoutMs);
    QCOMPARE(QApplication::focusWidget(), history->list());
    QTest::keyClick(history->list(), Qt::Key_Return);
    QVERIFY(history->showsReport());
    // From the list of pictures, Tab passes the disabled Put Back and
    // reaches Put Back All.
    CleanupReportView* report = history->reportView();
    QCOMPARE(QApplication::focusWidget(), report->items());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), report->putBackAllButton());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.cleanups().isPuttingBack(), kRunTimeoutMs);
    for (const auto& [path, contents] : rig.marked()) {
        QVERIFY(brevant::testing::readFile(path) == contents);
    }
}

namespace {

// The paths of every copy the model's groups and session hold.
std::set<std::string> pathsShown(PhotoCleanupModel& model) {
    std::set<std::string> paths;
    for (const auto& group : model.groups()) {
        for (const auto& member : group.members) {
            paths.insert(member.path);
        }
    }
    for (const auto& group : model.session()->groups()) {
        for (const auto& member : group.members) {
            paths.insert(member.path);
        }
    }
    return paths;
}

bool withinScreen(const QWidget& window) {
    QRect available = window.screen()->availableGeometry();
    return window.frameGeometry().height() <= available.height() &&
           window.minimumSizeHint().height() <= available.height();
}

} // namespace

void CleanupWindowTest::resultsFollowACleanupAndAPutBack() {
    Rig rig;
    QVERIFY(rig.isActive());
    const std::string third = rig.addCopies("Holidays/IMG_1001.JPG", 1).front();
    QVERIFY(rig.scan());
    std::shared_ptr<ReviewSession> session = rig.model().session();
    QCOMPARE(session->groups().size(), std::size_t{2});
    const std::set<std::string> before = pathsShown(rig.model());
    const std::int64_t bytesBefore = rig.model().bytesToFree();
    QCOMPARE(rig.window().overview()->groupsFigure(), QStringLiteral("2"));

    // One copy of the group of three and one of the pair move.
    const DuplicateGroup& pair =
        session->groups()[0].members.size() == 2 ? session->groups()[0] : session->groups()[1];
    const std::string pairCopy = pair.members.back().path;
    QVERIFY(session->mark(third).has_value());
    QVERIFY(session->mark(pairCopy).has_value());
    const std::set<std::string> moved{third, pairCopy};
    const std::int64_t bytesMoved = fileSize(third) + fileSize(pairCopy);
    QVERIFY(rig.confirmCard());
    QTRY_VERIFY_WITH_TIMEOUT(rig.window().cleanupScreen()->showsReport(), kRunTimeoutMs);
    QCOMPARE(rig.report()->figure(QStringLiteral("Moved")), QStringLiteral("2"));

    // No moved copy is left in the results; the pair is gone and the
    // figures drop by what moved.
    std::set<std::string> after = pathsShown(rig.model());
    for (const auto& path : moved) {
        QVERIFY2(!after.contains(path), path.c_str());
    }
    QCOMPARE(after.size(), before.size() - 3);
    QCOMPARE(rig.model().groups().size(), std::size_t{1});
    QCOMPARE(rig.model().session()->groups().front().members.size(), std::size_t{2});
    QCOMPARE(rig.model().bytesToFree(), bytesBefore - bytesMoved);
    QTest::keyClick(rig.window().cleanupScreen()->doneButton(), Qt::Key_Return);
    QCOMPARE(rig.window().currentScreen(), static_cast<QWidget*>(rig.window().overview()));
    QCOMPARE(rig.window().overview()->groupsFigure(), QStringLiteral("1"));
    QCOMPARE(rig.window().overview()->bytesFigure(), byteText(bytesBefore - bytesMoved));

    // Marking every suggestion again marks only copies still there.
    rig.window().showReview();
    QAction* markAll = rig.window().action(QStringLiteral("Mark Suggested Copies in Every Group"));
    QVERIFY(markAll != nullptr);
    markAll->trigger();
    const std::set<std::string>& marks = rig.model().session()->marks();
    QCOMPARE(marks.size(), std::size_t{1});
    QVERIFY(!moved.contains(*marks.begin()));
    QVERIFY(fileSize(*marks.begin()) > 0);
    rig.model().session()->clearMarks(rig.model().session()->groups().front());
    rig.model().noteMarksChanged();

    // Put Back All brings both back into their groups, without a scan.
    rig.window().showHistory();
    HistoryScreen* history = rig.window().historyScreen();
    QTRY_COMPARE_WITH_TIMEOUT(history->list()->topLevelItemCount(), 1, kRunTimeoutMs);
    QTest::keyClick(history->list(), Qt::Key_Return);
    QVERIFY(history->showsReport());
    QTest::mouseClick(history->reportView()->putBackAllButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.cleanups().isPuttingBack(), kRunTimeoutMs);
    QCOMPARE(history->reportView()->putBackMessage(),
             QStringLiteral("2 pictures are back where they were."));
    // Nothing of it is in the Trash any more, so emptying it frees nothing.
    QCOMPARE(history->reportView()->generalNote(), QString());
    QCOMPARE(pathsShown(rig.model()), before);
    QCOMPARE(rig.model().groups().size(), std::size_t{2});
    QCOMPARE(rig.model().bytesToFree(), bytesBefore);
    QVERIFY(rig.model().session()->marks().empty());
    QVERIFY(withinScreen(rig.window()));
}

void CleanupWindowTest::putBackOfManyPicturesKeepsTheWindowOnTheScreen() {
    Rig rig;
    QVERIFY(rig.isActive());
    // The first size is fitted to the (small) offscreen screen.
    QVERIFY(withinScreen(rig.window()));
    rig.addCopies("Holidays/IMG_1001.JPG", 40);
    QVERIFY(rig.runCleanup());
    CleanupReportView* report = rig.report();
    const int moved = static_cast<int>(rig.marked().size());
    QCOMPARE(moved, 42);
    QTest::mouseClick(report->putBackAllButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.cleanups().isPuttingBack(), kRunTimeoutMs);
    QCOMPARE(report->putBackMessage(), QStringLiteral("42 pictures are back where they were."));
    QCOMPARE(report->figure(QStringLiteral("Put back")), QStringLiteral("42"));
    QVERIFY(withinScreen(rig.window()));
    QCoreApplication::processEvents();
    QVERIFY(withinScreen(rig.window()));
}

void CleanupWindowTest::overviewSaysEveryGroupWasCleanedUp() {
    Rig rig;
    QVERIFY(rig.isActive());
    // Every suggestion marked: each group is left with its keeper alone.
    QVERIFY(rig.runCleanup());
    const int moved = static_cast<int>(rig.marked().size());
    QVERIFY(moved > 0);
    QVERIFY(rig.model().groups().empty());
    QCOMPARE(rig.model().copiesAway(), moved);
    QTest::keyClick(rig.window().cleanupScreen()->doneButton(), Qt::Key_Return);
    OverviewScreen* overview = rig.window().overview();
    QCOMPARE(rig.window().currentScreen(), static_cast<QWidget*>(overview));
    // Copies were found and cleaned: nothing was "not found".
    QCOMPARE(overview->headline(), QStringLiteral("Every group is cleaned up."));
    QCOMPARE(overview->groupsFigure(), QStringLiteral("0"));
    QVERIFY(!overview->showsIncompleteNotice());

    // Put back, the groups return and the overview is an overview again.
    rig.window().showHistory();
    HistoryScreen* history = rig.window().historyScreen();
    QTRY_COMPARE_WITH_TIMEOUT(history->list()->topLevelItemCount(), 1, kRunTimeoutMs);
    QTest::keyClick(history->list(), Qt::Key_Return);
    QTest::mouseClick(history->reportView()->putBackAllButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.cleanups().isPuttingBack(), kRunTimeoutMs);
    QCOMPARE(rig.model().copiesAway(), 0);
    QCOMPARE(overview->headline(), QStringLiteral("Overview"));
}

BREVANT_GUI_TEST(CleanupWindowTest);

} // namespace brevant::gui::testing

#include "CleanupWindowTest.moc"
