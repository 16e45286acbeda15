#pragma once

#include "engine/cleanup/CleanupReport.hpp"

#include <QMainWindow>
#include <QPointer>

#include <vector>

class QAction;
class QActionGroup;
class QMenu;
class QSettings;
class QStackedWidget;

namespace brevant::gui {

class CleanupCard;
class CleanupController;
class CleanupScreen;
class CompressionController;
class CompressionScreen;
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
// phase (home while idle, progress while scanning, the overview or the
// review once a result is there, the cleanup's run and report while
// cleaning and until the user is done with it, the compression's screen
// while compressing); the history screen is shown on request.
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

    // Compression: the files found, the card, the run and its report.
    [[nodiscard]] CompressionController* compressions() const { return compressions_; }

    [[nodiscard]] CompressionScreen* compressionScreen() const { return compressionScreen_; }

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
    // Within the screen's free area: neither larger nor off its edges.
    void fitToScreen();
    void buildMenus();
    void followPhase();
    void showOverview();
    void updateActions();
    void buildCleanup();
    void buildCompression();
    void addCleanupActions(QMenu* file);
    void addHistoryAction(QMenu* view);
    void updateCleanupActions();
    // Reports of cleanups a crash left unfinished, once the screen is free.
    void showRecoveredReports();

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
    CompressionController* compressions_ = nullptr;
    CompressionScreen* compressionScreen_ = nullptr;
    QPointer<CleanupCard> card_;
    QAction* reviewCleanup_ = nullptr;
    QAction* historyAction_ = nullptr;
    QAction* markCatalog_ = nullptr;
    QPointer<CatalogMarkingCard> markingCard_;
    MarkingsWindow* markings_ = nullptr;
    std::vector<CleanupReport> recovered_;
};

} // namespace brevant::gui
