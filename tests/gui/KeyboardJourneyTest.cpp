#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/CleanupCard.hpp"
#include "app/gui/CleanupReportView.hpp"
#include "app/gui/CleanupScreen.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/ReviewScreen.hpp"
#include "app/gui/Skins.hpp"
#include "engine/support/PathNames.hpp"

#include <QApplication>
#include <QPushButton>
#include <QTest>

#include <filesystem>
#include <string>
#include <vector>

namespace brevant::gui::testing {

namespace {

using brevant::testing::ScopedEnvironment;
using Phase = PhotoCleanupModel::Phase;

constexpr int kScanTimeoutMs = 240'000;
constexpr int kRunTimeoutMs = 60'000;

// Types on whatever has the focus, as a user at the keyboard does; false
// when nothing has it, so the next key would go nowhere.
bool press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWidget* focused = QApplication::focusWidget();
    if (focused == nullptr) {
        return false;
    }
    QTest::keyClick(focused, key, modifiers);
    return true;
}

// A group of two identical copies after the review.
struct Pair {
    std::string kept;
    std::string marked;
    std::string bytes;
};

int filesIn(const std::string& folder) {
    std::error_code error;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        count += entry.is_regular_file() ? 1 : 0;
    }
    return count;
}

} // namespace

// From the first screen to a finished cleanup with no mouse at all.
class KeyboardJourneyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keyboardAloneTakesAScanToAFinishedCleanup();
};

void KeyboardJourneyTest::keyboardAloneTakesAScanToAFinishedCleanup() {
    TempTree tree;
    std::string dataHome = tree.folder("data-home");
    ScopedEnvironment xdgDataHome("XDG_DATA_HOME", dataHome);
    SampleLibrary library;
    ModelFixture fixture;
    ScopedEnvironment dataDir("BREVANT_DATA_DIR", fixture.dataFolder());
    // The folder is chosen in the desktop's own folder chooser, which a test
    // cannot drive; it goes into the settings before the window opens.
    fixture.model().setSources({library.root()});
    fixture.model().setMode(CleanupSettings::Mode::identical);
    Skins skins;
    MainWindow window(fixture.model(), skins, fixture.store());
    window.show();
    window.activateWindow();
    // Shortcuts only reach the active window.
    QVERIFY(QTest::qWaitForWindowActive(&window));

    // Scan, and land on the way into the review.
    QVERIFY(press(Qt::Key_R, Qt::ControlModifier));
    QTRY_VERIFY_WITH_TIMEOUT(fixture.model().phase() == Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(window.currentScreen(), static_cast<QWidget*>(window.overview()));
    QCOMPARE(QApplication::focusWidget(), window.overview()->reviewButton());
    QVERIFY(press(Qt::Key_Return));
    QCOMPARE(window.currentScreen(), static_cast<QWidget*>(window.review()));

    // Each group in turn: mark its suggested copies, then the next group.
    std::shared_ptr<const ReviewSession> session = fixture.model().session();
    QVERIFY(session != nullptr);
    const auto& groups = session->groups();
    QCOMPARE(groups.size(), std::size_t{2});
    for (std::size_t i = 0; i < groups.size(); ++i) {
        QVERIFY(press(Qt::Key_M, Qt::ControlModifier));
        QVERIFY(press(Qt::Key_Down));
    }
    // Identical pairs: each group keeps one copy and marks the other.
    std::vector<Pair> pairs;
    for (const auto& group : groups) {
        QCOMPARE(group.members.size(), std::size_t{2});
        Pair pair;
        for (const auto& member : group.members) {
            (session->marks().contains(member.path) ? pair.marked : pair.kept) = member.path;
        }
        QVERIFY(!pair.marked.empty() && !pair.kept.empty());
        pair.bytes = brevant::testing::readFile(pair.kept);
        QVERIFY(brevant::testing::readFile(pair.marked) == pair.bytes);
        pairs.push_back(pair);
    }

    // The card opens with its confirm button ready for Enter.
    QVERIFY(press(Qt::Key_Delete, Qt::ControlModifier));
    CleanupCard* card = window.cleanupCard();
    QVERIFY(card != nullptr);
    QVERIFY(card->hasPlan());
    // The card is a window of its own; keys reach it once it is active.
    QTRY_VERIFY(card->isActiveWindow());
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(card->confirmButton()));
    QVERIFY(press(Qt::Key_Return));
    QTRY_VERIFY_WITH_TIMEOUT(window.cleanupScreen()->showsReport(), kRunTimeoutMs);
    QCOMPARE(window.cleanupScreen()->reportView()->title(), QStringLiteral("Cleanup finished"));
    QCOMPARE(window.cleanupScreen()->reportView()->figure(QStringLiteral("Moved")),
             QStringLiteral("2"));

    // Exactly the marked copies went to the Trash, whole; one copy of each
    // group stays where it was.
    std::string trashFiles = dataHome + "/Trash/files";
    QCOMPARE(filesIn(trashFiles), 2);
    for (const Pair& pair : pairs) {
        QVERIFY(!std::filesystem::exists(pair.marked));
        std::string trashed = trashFiles + "/" + PathNames::lastComponent(pair.marked);
        QVERIFY(brevant::testing::readFile(trashed) == pair.bytes);
        QVERIFY(brevant::testing::readFile(pair.kept) == pair.bytes);
    }
}

BREVANT_GUI_TEST(KeyboardJourneyTest);

} // namespace brevant::gui::testing

#include "KeyboardJourneyTest.moc"
