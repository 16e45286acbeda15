#pragma once

#include <QMainWindow>

class QAction;
class QActionGroup;
class QMenu;
class QSettings;
class QStackedWidget;

namespace brevant::gui {

class HomeScreen;
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

    // --- The review screen ---
    [[nodiscard]] ReviewScreen* review() const { return review_; }

    // Opens the review of the current groups.
    void showReview();
    // --- end of the review screen's part ---

    [[nodiscard]] QWidget* currentScreen() const;

    [[nodiscard]] QMenu* editMenu() const { return editMenu_; }

    // The menu action with this text (without the "&" marks), or null.
    [[nodiscard]] QAction* action(const QString& text) const;

    void showSettings();
    void showAbout();
    // The settings window, made on first use.
    [[nodiscard]] SettingsWindow* settingsWindow();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void followPhase();
    void updateActions();

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
};

} // namespace brevant::gui
