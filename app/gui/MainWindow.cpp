#include "MainWindow.hpp"

#include "app/gui/AboutPanel.hpp"
#include "app/gui/CatalogMarkingCard.hpp"
#include "app/gui/CleanupCard.hpp"
#include "app/gui/CleanupController.hpp"
#include "app/gui/CleanupScreen.hpp"
#include "app/gui/CleanupSettings.hpp"
#include "app/gui/CompressionController.hpp"
#include "app/gui/CompressionScreen.hpp"
#include "app/gui/FolderList.hpp"
#include "app/gui/HistoryScreen.hpp"
#include "app/gui/HomeScreen.hpp"
#include "app/gui/MarkingsWindow.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/ProgressScreen.hpp"
#include "app/gui/ReviewScreen.hpp"
#include "app/gui/SettingsWindow.hpp"
#include "app/gui/Skins.hpp"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QIcon>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QStackedWidget>
#include <QStatusBar>

#include <algorithm>
#include <utility>

namespace brevant::gui {

namespace {

using Phase = PhotoCleanupModel::Phase;

constexpr QSize kFirstSize(1080, 780);

QString geometryKey() {
    return QString::fromLatin1(settings_keys::kWindowGeometry.data(),
                               static_cast<qsizetype>(settings_keys::kWindowGeometry.size()));
}

} // namespace

MainWindow::MainWindow(PhotoCleanupModel& model, Skins& skins, QSettings& store, QWidget* parent)
    : QMainWindow(parent)
    , model_(model)
    , skins_(skins)
    , store_(store)
    , screens_(new QStackedWidget(this))
    , home_(new HomeScreen(model, screens_))
    , progress_(new ProgressScreen(model, screens_))
    , overview_(new OverviewScreen(model, screens_)) {
    setWindowTitle(QStringLiteral("Brevant"));
    setWindowIcon(
        QIcon::fromTheme(QStringLiteral(BREVANT_APP_ID), QIcon(QStringLiteral(":/brevant.svg"))));
    screens_->addWidget(home_);
    screens_->addWidget(progress_);
    screens_->addWidget(overview_);
    setCentralWidget(screens_);
    buildCleanup();
    buildCompression();
    review_ = new ReviewScreen(model, screens_);
    screens_->addWidget(review_);
    overview_->setReviewAvailable(true);
    connect(overview_, &OverviewScreen::reviewRequested, this, &MainWindow::showReview);
    connect(review_, &ReviewScreen::cleanupRequested, this, &MainWindow::showCleanupCard);
    connect(review_, &ReviewScreen::overviewRequested, this, &MainWindow::showOverview);

    buildMenus();
    if (!restoreGeometry(store_.value(geometryKey()).toByteArray())) {
        resize(kFirstSize);
    }
    fitToScreen();
    connect(&model_, &PhotoCleanupModel::phaseChanged, this, &MainWindow::followPhase);
    connect(&model_, &PhotoCleanupModel::settingsChanged, this, &MainWindow::updateActions);
    connect(&model_, &PhotoCleanupModel::resultChanged, this, &MainWindow::updateActions);
    connect(&model_, &PhotoCleanupModel::catalogChanged, this, &MainWindow::updateActions);
    // What a resumed review took back, said as its result arrives.
    connect(&model_, &PhotoCleanupModel::resultChanged, this, [this] {
        if (QString resumed = model_.resumedText(); !resumed.isEmpty()) {
            statusBar()->showMessage(resumed);
        }
    });
    connect(&skins_, &Skins::applied, this, [this](const QString& name) {
        for (QAction* action : skinActions_->actions()) {
            action->setChecked(action->data().toString() == name);
        }
    });
    followPhase();
}

void MainWindow::fitToScreen() {
    // A size saved on a larger screen, or the first size on a small one,
    // would put Done and Back out of reach.
    QScreen* shown = screen();
    if (shown == nullptr) {
        return;
    }
    QRect available = shown->availableGeometry();
    QSize frame = frameGeometry().size() - geometry().size();
    QSize fitted = size().boundedTo(available.size() - frame);
    if (fitted != size()) {
        resize(fitted);
    }
    QRect placed = frameGeometry();
    if (!available.contains(placed)) {
        placed.moveLeft(std::clamp(placed.left(), available.left(),
                                   std::max(available.left(), available.right() - placed.width())));
        placed.moveTop(std::clamp(placed.top(), available.top(),
                                  std::max(available.top(), available.bottom() - placed.height())));
        move(placed.topLeft());
    }
}

void MainWindow::buildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    addFolder_ = file->addAction(tr("&Add Folder…"), this, [this] {
        model_.returnHome();
        if (model_.phase() == Phase::idle) {
            home_->sources()->chooseFolder();
        }
    });
    // The keys GNOME and KDE use; Qt's standard keys depend on the platform
    // theme, and without one (under Xvfb, in tests) differ from both.
    addFolder_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    scan_ = file->addAction(tr("&Scan"), this, [this] { model_.startScan(); });
    scan_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    QAction* newScan = file->addAction(tr("&New Scan"), &model_, &PhotoCleanupModel::returnHome);
    newScan->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_N));
    addCleanupActions(file);
    file->addSeparator();
    // Its text follows the catalog scope; it is hidden for folders.
    markCatalog_ = file->addAction(QString(), this, &MainWindow::showCatalogMarkingCard);
    file->addSeparator();
    QAction* close = file->addAction(tr("&Close"), this, &QWidget::close);
    close->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    QAction* quit = file->addAction(tr("&Quit"), qApp, &QApplication::closeAllWindows);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));

    editMenu_ = menuBar()->addMenu(tr("&Edit"));
    // The marking commands of the review screen go above this separator.
    editMenu_->addActions(review_->markingActions());
    editMenu_->addSeparator()->setObjectName(QStringLiteral("markingCommands"));
    QAction* preferences =
        editMenu_->addAction(tr("&Preferences…"), this, &MainWindow::showSettings);
    preferences->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    preferences->setMenuRole(QAction::PreferencesRole);

    QMenu* view = menuBar()->addMenu(tr("&View"));
    QMenu* skinMenu = view->addMenu(tr("S&kin"));
    skinActions_ = new QActionGroup(this);
    for (const QString& name : Skins::names()) {
        QAction* action = skinMenu->addAction(Skins::title(name));
        action->setCheckable(true);
        action->setData(name);
        action->setChecked(name == skins_.current());
        skinActions_->addAction(action);
    }
    connect(skinActions_, &QActionGroup::triggered, this, [this](QAction* action) {
        QString name = action->data().toString();
        skins_.apply(name);
        model_.setSkin(name.toStdString());
    });
    view->addSeparator();
    showSkipped_ = view->addAction(tr("Show S&kipped Files"), this, [this] {
        if (model_.hasResult() && model_.phase() != Phase::scanning) {
            screens_->setCurrentWidget(overview_);
            overview_->showSkipped();
        }
    });
    addHistoryAction(view);
    view->addAction(tr("&Markings and Taggings…"), this, &MainWindow::showMarkings);

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    QAction* about = help->addAction(tr("&About Brevant"), this, &MainWindow::showAbout);
    about->setMenuRole(QAction::AboutRole);
    updateActions();
}

void MainWindow::followPhase() {
    switch (model_.phase()) {
    case Phase::idle:
        screens_->setCurrentWidget(home_);
        break;
    case Phase::scanning:
        screens_->setCurrentWidget(progress_);
        // Escape, Space or Enter cancels from the keyboard.
        progress_->cancelButton()->setFocus();
        break;
    case Phase::reviewing:
        // A preset change while reviewing stays in the review.
        if (screens_->currentWidget() != review_) {
            showOverview();
        }
        break;
    case Phase::cleaning:
    case Phase::finished:
        // The run's screen stays in front until the user is done with its
        // report.
        screens_->setCurrentWidget(cleanupScreen_);
        break;
    case Phase::compressing:
        screens_->setCurrentWidget(compressionScreen_);
        break;
    }
    updateActions();
    showRecoveredReports();
}

void MainWindow::updateActions() {
    bool scanning = model_.phase() == Phase::scanning;
    scan_->setEnabled(model_.canScan());
    addFolder_->setEnabled(!scanning);
    showSkipped_->setEnabled(!scanning && model_.hasResult());
    updateCleanupActions();
    auto scope = model_.settings().scope;
    bool catalog = scope != CleanupSettings::Scope::folders;
    markCatalog_->setVisible(catalog);
    markCatalog_->setText(catalog_texts::command(scope));
    markCatalog_->setEnabled(catalog && !scanning && model_.session() != nullptr);
    if (reviewCleanup_ != nullptr) {
        reviewCleanup_->setVisible(!catalog);
    }
}

void MainWindow::showOverview() {
    if (screens_->currentWidget() == overview_) {
        return;
    }
    screens_->setCurrentWidget(overview_);
    // The hidden screen took the focus along; Enter goes on from here.
    overview_->focusNextStep();
}

void MainWindow::showReview() {
    if (model_.session() == nullptr) {
        return;
    }
    screens_->setCurrentWidget(review_);
    review_->open();
}

QWidget* MainWindow::currentScreen() const {
    return screens_->currentWidget();
}

QAction* MainWindow::action(const QString& text) const {
    const auto actions = findChildren<QAction*>();
    for (QAction* candidate : actions) {
        if (candidate->text().remove(QLatin1Char('&')) == text) {
            return candidate;
        }
    }
    return nullptr;
}

SettingsWindow* MainWindow::settingsWindow() {
    if (settings_ == nullptr) {
        settings_ = new SettingsWindow(model_, skins_, this);
    }
    return settings_;
}

void MainWindow::showSettings() {
    SettingsWindow* window = settingsWindow();
    window->show();
    window->raise();
    window->activateWindow();
}

void MainWindow::showAbout() {
    AboutPanel panel(this);
    panel.exec();
}

void MainWindow::showCatalogMarkingCard() {
    review_->finishMarking();
    auto scope = model_.settings().scope;
    if (scope == CleanupSettings::Scope::folders || model_.session() == nullptr) {
        return;
    }
    if (markingCard_ == nullptr) {
        markingCard_ = new CatalogMarkingCard(model_, scope, this);
        markingCard_->setAttribute(Qt::WA_DeleteOnClose);
        connect(markingCard_, &CatalogMarkingCard::markingFinished, this, [this] {
            if (markings_ != nullptr) {
                markings_->reload();
            }
        });
    }
    markingCard_->open();
    markingCard_->raise();
}

CatalogMarkingCard* MainWindow::catalogMarkingCard() const {
    return markingCard_.data();
}

MarkingsWindow* MainWindow::markingsWindow() {
    if (markings_ == nullptr) {
        markings_ = new MarkingsWindow(model_.dataFolder(), this);
    }
    return markings_;
}

void MainWindow::showMarkings() {
    MarkingsWindow* window = markingsWindow();
    window->reload();
    window->show();
    window->raise();
    window->activateWindow();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    store_.setValue(geometryKey(), saveGeometry());
    model_.cancelScan();
    cleanups_->stopAfterThisOne();
    compressions_->stopAfterThisOne();
    event->accept();
}

// Folder cleanups.

void MainWindow::buildCleanup() {
    cleanups_ = new CleanupController(model_, this);
    cleanupScreen_ = new CleanupScreen(*cleanups_, screens_);
    history_ = new HistoryScreen(*cleanups_, screens_);
    screens_->addWidget(cleanupScreen_);
    screens_->addWidget(history_);
    connect(cleanupScreen_, &CleanupScreen::finished, this, [this] {
        model_.closeReports();
        followPhase();
    });
    connect(history_, &HistoryScreen::finished, this, &MainWindow::followPhase);
    connect(cleanups_, &CleanupController::interruptedRecovered, this,
            [this](const std::vector<CleanupReport>& reports) {
                recovered_.insert(recovered_.end(), reports.begin(), reports.end());
                showRecoveredReports();
            });
}

void MainWindow::buildCompression() {
    compressions_ = new CompressionController(model_, this);
    compressionScreen_ = new CompressionScreen(*compressions_, screens_);
    screens_->addWidget(compressionScreen_);
    connect(home_, &HomeScreen::compressRequested, compressions_,
            [this] { (void)compressions_->find(); });
    history_->showCompressions(*compressions_);
}

void MainWindow::showRecoveredReports() {
    if (recovered_.empty()) {
        return;
    }
    std::vector<CleanupReport> reports = std::exchange(recovered_, {});
    // They wait while a scan or a cleanup has the screen.
    if (!model_.showReports()) {
        recovered_ = std::move(reports);
        return;
    }
    // Another screen (the history) may be in front of an earlier report.
    screens_->setCurrentWidget(cleanupScreen_);
    cleanupScreen_->showReports(reports);
}

void MainWindow::addCleanupActions(QMenu* file) {
    file->addSeparator();
    reviewCleanup_ =
        file->addAction(tr("Review && Move to Trash…"), this, &MainWindow::showCleanupCard);
    reviewCleanup_->setObjectName(QStringLiteral("reviewCleanup"));
    reviewCleanup_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Delete));
}

void MainWindow::addHistoryAction(QMenu* view) {
    historyAction_ = view->addAction(tr("&History of Cleanups…"), this, &MainWindow::showHistory);
    historyAction_->setObjectName(QStringLiteral("historyOfCleanups"));
    historyAction_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_H));
}

void MainWindow::updateCleanupActions() {
    if (reviewCleanup_ == nullptr) {
        return;
    }
    // A scan now would take the screen from the run, and read files that
    // are moving; canScan says no while a cleanup runs.
    bool busy = model_.phase() == Phase::scanning || model_.phase() == Phase::cleaning ||
                model_.phase() == Phase::compressing;
    reviewCleanup_->setEnabled(!busy && model_.hasResult());
    historyAction_->setEnabled(!busy);
    if (model_.phase() == Phase::cleaning) {
        addFolder_->setEnabled(false);
        showSkipped_->setEnabled(false);
    }
    if (QAction* newScan = action(tr("New Scan"))) {
        newScan->setEnabled(model_.phase() != Phase::cleaning &&
                            model_.phase() != Phase::compressing);
    }
}

CleanupCard* MainWindow::cleanupCard() const {
    return card_;
}

void MainWindow::showCleanupCard() {
    review_->finishMarking();
    // Photos of a catalog are flagged in the catalog, never moved.
    if (model_.settings().scope != CleanupSettings::Scope::folders) {
        showCatalogMarkingCard();
        return;
    }
    if (model_.phase() == Phase::cleaning || card_ != nullptr || !model_.hasResult()) {
        return;
    }
    auto* card = new CleanupCard(cleanups_->plan(), this);
    card->setAttribute(Qt::WA_DeleteOnClose);
    card_ = card;
    connect(card, &CleanupCard::approved, this, [this, card](const CleanupApproval& approval) {
        cleanups_->start(card->plan(), approval);
    });
    card->open();
}

void MainWindow::showHistory() {
    if (model_.phase() == Phase::cleaning || model_.phase() == Phase::compressing) {
        return;
    }
    screens_->setCurrentWidget(history_);
    history_->reload();
}

void MainWindow::recoverInterruptedCleanups() {
    cleanups_->recoverInterruptedCleanups();
}

} // namespace brevant::gui
