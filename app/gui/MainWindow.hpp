#pragma once

#include <QMainWindow>
#include <QPointer>

class QAction;
class QActionGroup;
class QMenu;
class QSettings;
class QStackedWidget;

namespace brevant::gui {

class CleanupCard;
class CleanupController;
class CleanupScreen;
class HistoryScreen;
class CatalogMarkingCard;
class HomeScreen;
class MarkingsWindow;
class OverviewScreen;
class PhotoCleanupModel;
class ProgressScreen;
class ReviewScreen;
class SettingsWindow;
class Skins;

// The one window: menus, and a stack of screens that follows the model's
// phase (home while idle, progress while scanning, the overview once a
// result is there). The review, cleanup and history screens join the stack
// later; the Edit menu keeps a place for the marking commands.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    MainWindow(PhotoCleanupModel& model, Skins& skins, QSettings& store, QWidget* parent = nullptr);

    [[nodiscard]] HomeScreen* home() const { return home_; }

    [[nodiscard]] ProgressScreen* progressScreen() const { return progress_; }

    [[nodiscard]] OverviewScreen* overview() const { return overview_; }

    [[nodiscard]] ReviewScreen* review() const { return review_; }

    // Opens the review of the current groups.
    void showReview();

    [[nodiscard]] QWidget* currentScreen() const;

    [[nodiscard]] QMenu* editMenu() const { return editMenu_; }

    // The menu action with this text (without the "&" marks), or null.
    [[nodiscard]] QAction* action(const QString& text) const;

    void showSettings();
    void showAbout();
    // The settings window, made on first use.
    [[nodiscard]] SettingsWindow* settingsWindow();

    // Folder cleanups: the card, the run and its report, the history.
    [[nodiscard]] CleanupController* cleanups() const { return cleanups_; }

    [[nodiscard]] CleanupScreen* cleanupScreen() const { return cleanupScreen_; }

    [[nodiscard]] HistoryScreen* historyScreen() const { return history_; }

    // The open review card, or null.
    [[nodiscard]] CleanupCard* cleanupCard() const;

    // The open marking card, or null.
    [[nodiscard]] CatalogMarkingCard* catalogMarkingCard() const;

    // The list of catalog markings, made on first use.
    [[nodiscard]] MarkingsWindow* markingsWindow();
    void showMarkings();

public Q_SLOTS:
    // "Review & Move to Trash…" over the current marks.
    void showCleanupCard();
    void showHistory();
    // At start: reconciles cleanups a crash left unfinished and shows
    // their reports.
    void recoverInterruptedCleanups();
    // For a catalog scope with a result: what marking the reviewed copies
    // in the catalog will do, to confirm.
    void showCatalogMarkingCard();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void followPhase();
    void showOverview();
    void updateActions();
    void buildCleanup();
    void addCleanupActions(QMenu* file);
    void addHistoryAction(QMenu* view);
    void updateCleanupActions();

    PhotoCleanupModel& model_;
    Skins& skins_;
    QSettings& store_;
    QStackedWidget* screens_;
    HomeScreen* home_;
    ProgressScreen* progress_;
    OverviewScreen* overview_;
    ReviewScreen* review_ = nullptr;
    SettingsWindow* settings_ = nullptr;
    QMenu* editMenu_ = nullptr;
    QAction* addFolder_ = nullptr;
    QAction* scan_ = nullptr;
    QAction* showSkipped_ = nullptr;
    QActionGroup* skinActions_ = nullptr;
    CleanupController* cleanups_ = nullptr;
    CleanupScreen* cleanupScreen_ = nullptr;
    HistoryScreen* history_ = nullptr;
    QPointer<CleanupCard> card_;
    QAction* reviewCleanup_ = nullptr;
    QAction* historyAction_ = nullptr;
    QAction* markCatalog_ = nullptr;
    QPointer<CatalogMarkingCard> markingCard_;
    MarkingsWindow* markings_ = nullptr;
};

} // namespace brevant::gui
