#include "app/gui/MainWindow.hpp"

#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/AboutPanel.hpp"
#include "app/gui/FolderList.hpp"
#include "app/gui/HomeScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/ProgressScreen.hpp"
#include "app/gui/SettingsWindow.hpp"
#include "app/gui/Skins.hpp"
#include "app/gui/WindowTexts.hpp"

#include <QAbstractButton>
#include <QAction>
#include <QButtonGroup>
#include <QComboBox>
#include <QGuiApplication>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

namespace brevant::gui::testing {

namespace {

using Phase = PhotoCleanupModel::Phase;

QStringList menuTitles(const QMenuBar* bar) {
    QStringList titles;
    for (const QAction* action : bar->actions()) {
        titles.push_back(action->text().remove(QLatin1Char('&')));
    }
    return titles;
}

} // namespace

class MainWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void offersTheMenusWithDesktopShortcuts();
    void switchesAndRemembersTheSkin();
    void startsAndCancelsAScanByKeyboard();
    void remembersItsSize();
    void aboutPanelSaysWhatStaysOnThisComputer();
    void settingsWindowChangesTheModel();
};

void MainWindowTest::offersTheMenusWithDesktopShortcuts() {
    ModelFixture fixture;
    Skins skins;
    MainWindow window(fixture.model(), skins, fixture.store());
    QCOMPARE(menuTitles(window.menuBar()), (QStringList{"File", "Edit", "View", "Help"}));
    const std::pair<const char*, QKeySequence> shortcuts[] = {
        {"Add Folder…", QKeySequence(Qt::CTRL | Qt::Key_O)},
        {"Scan", QKeySequence(Qt::CTRL | Qt::Key_R)},
        {"New Scan", QKeySequence(Qt::CTRL | Qt::Key_N)},
        {"Close", QKeySequence(Qt::CTRL | Qt::Key_W)},
        {"Quit", QKeySequence(Qt::CTRL | Qt::Key_Q)},
        {"Preferences…", QKeySequence(Qt::CTRL | Qt::Key_Comma)},
    };
    for (const auto& [text, keys] : shortcuts) {
        QAction* action = window.action(QString::fromUtf8(text));
        QVERIFY2(action != nullptr, text);
        QCOMPARE(action->shortcut(), keys);
    }
    QVERIFY(window.action(QStringLiteral("About Brevant")) != nullptr);
    QVERIFY(window.action(QStringLiteral("Show Skipped Files")) != nullptr);
    // Nothing to scan and no result yet.
    QVERIFY(!window.action(QStringLiteral("Scan"))->isEnabled());
    QVERIFY(!window.action(QStringLiteral("Show Skipped Files"))->isEnabled());
    fixture.model().addSource("/srv/Photos");
    QVERIFY(window.action(QStringLiteral("Scan"))->isEnabled());
    // The marking commands of the review screen get their place in Edit.
    QVERIFY(window.editMenu()->findChild<QAction*>(QStringLiteral("markingCommands")) != nullptr);
}

void MainWindowTest::switchesAndRemembersTheSkin() {
    ModelFixture fixture;
    Skins skins;
    skins.apply(QStringLiteral("classic"));
    MainWindow window(fixture.model(), skins, fixture.store());
    for (const QString& name : Skins::names()) {
        QVERIFY(window.action(Skins::title(name)) != nullptr);
    }
    window.action(QStringLiteral("Nightfall"))->trigger();
    QCOMPARE(skins.current(), QStringLiteral("nightfall"));
    QVERIFY(window.action(QStringLiteral("Nightfall"))->isChecked());
    QVERIFY(!window.action(QStringLiteral("Classic"))->isChecked());
    QSettings reread(QString::fromStdString(fixture.settingsPath()), QSettings::IniFormat);
    QCOMPARE(reread.value(QStringLiteral("photoCleanup.skin")).toString(),
             QStringLiteral("nightfall"));
    qApp->setStyleSheet({});
}

void MainWindowTest::startsAndCancelsAScanByKeyboard() {
    SampleLibrary library;
    ModelFixture fixture;
    Skins skins;
    MainWindow window(fixture.model(), skins, fixture.store());
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    PhotoCleanupModel& model = fixture.model();
    model.setSources({library.root()});
    model.setMode(CleanupSettings::Mode::similar);
    QSignalSpy cancelled(&model, &PhotoCleanupModel::scanCancelled);

    QTest::keyClick(&window, Qt::Key_R, Qt::ControlModifier);
    QCOMPARE(model.phase(), Phase::scanning);
    QCOMPARE(window.currentScreen(), window.progressScreen());
    // A button's shortcut clicks it a moment later, as it shows the press.
    QTest::keyClick(&window, Qt::Key_Escape);
    QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::idle, 240'000);
    QCOMPARE(cancelled.count(), 1);
    QCOMPARE(window.currentScreen(), window.home());
}

void MainWindowTest::remembersItsSize() {
    ModelFixture fixture;
    Skins skins;
    // A height that fits the (offscreen) screen comes back as it was; one
    // saved on a taller screen comes back fitted to this one. (The window's
    // least width is more than this small screen's.)
    int available = QGuiApplication::primaryScreen()->availableGeometry().height();
    for (int saved : {520, available + 300}) {
        {
            MainWindow window(fixture.model(), skins, fixture.store());
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            window.resize(window.width(), saved);
            QTRY_COMPARE(window.height(), saved);
            window.close();
        }
        MainWindow again(fixture.model(), skins, fixture.store());
        QCOMPARE(again.height(), std::min(saved, available));
    }
}

void MainWindowTest::aboutPanelSaysWhatStaysOnThisComputer() {
    AboutPanel panel;
    QString text = panel.text();
    QVERIFY(text.contains(QStringLiteral("Brevant")));
    QVERIFY(text.contains(QStringLiteral("Version " BREVANT_VERSION)));
    QVERIFY(text.contains(QStringLiteral(
        "Everything runs on this computer; no photo, file name or result leaves it.")));
    QVERIFY(text.contains(QStringLiteral(BREVANT_LICENSE)));
    QVERIFY(text.contains(QLatin1String(texts::kUpdates)));
}

void MainWindowTest::settingsWindowChangesTheModel() {
    ModelFixture fixture;
    Skins skins;
    MainWindow window(fixture.model(), skins, fixture.store());
    SettingsWindow* settings = window.settingsWindow();
    PhotoCleanupModel& model = fixture.model();
    QCOMPARE(settings->dataFolderText(), QString::fromStdString(fixture.dataFolder()));
    // The download folder is the one inbox until the user says otherwise.
    QCOMPARE(settings->inboxFolders()->folders(), model.settings().inboxFolders);
    QCOMPARE(model.settings().inboxFolders.size(), std::size_t{1});

    settings->inboxFolders()->addFolders({"/srv/Inbox"});
    QCOMPARE(model.settings().inboxFolders.back(), std::string("/srv/Inbox"));
    settings->protectedFolders()->addFolders({"/srv/Keep"});
    QCOMPARE(model.settings().protectedFolders, std::vector<std::string>{"/srv/Keep"});
    Q_EMIT settings->presets()->idClicked(static_cast<int>(SimilarityPreset::broad));
    QCOMPARE(model.settings().preset, SimilarityPreset::broad);
    // The keeper priorities: the standard order first and checked, then
    // the others, each with its label.
    QListWidget* priorities = settings->priorities();
    QCOMPARE(priorities->count(), 10);
    QCOMPARE(priorities->item(0)->text(), QStringLiteral("Fewest closed eyes (same people in "
                                                         "each photo)"));
    QCOMPARE(settings->shownPriorities(), KeeperPolicy::standardPriorities());
    QCOMPARE(priorities->item(7)->checkState(), Qt::Unchecked);
    priorities->item(0)->setCheckState(Qt::Unchecked);
    std::vector<KeeperPolicy::Priority> withoutEyes(KeeperPolicy::standardPriorities().begin() + 1,
                                                    KeeperPolicy::standardPriorities().end());
    QCOMPARE(model.settings().priorities, withoutEyes);
    // Dragging the last checked entry to the top reorders them.
    priorities->model()->moveRow({}, 6, {}, 0);
    QCOMPARE(model.settings().priorities.front(), KeeperPolicy::Priority::shallowest);
    settings->resetPrioritiesButton()->click();
    QCOMPARE(model.settings().priorities, KeeperPolicy::standardPriorities());
    QCOMPARE(settings->shownPriorities(), KeeperPolicy::standardPriorities());

    QComboBox* skin = settings->skinChoice();
    skin->setCurrentIndex(skin->findData(QStringLiteral("hibernia")));
    Q_EMIT skin->activated(skin->currentIndex());
    QCOMPARE(skins.current(), QStringLiteral("hibernia"));
    QCOMPARE(model.settings().skin, std::string("hibernia"));
    // Changes made elsewhere show in the window.
    model.setPreset(SimilarityPreset::conservative);
    QVERIFY(
        settings->presets()->button(static_cast<int>(SimilarityPreset::conservative))->isChecked());
    qApp->setStyleSheet({});
}

BREVANT_GUI_TEST(MainWindowTest);

} // namespace brevant::gui::testing

#include "MainWindowTest.moc"
