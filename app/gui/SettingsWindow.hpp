#pragma once

#include "engine/review/KeeperPolicy.hpp"
#include "engine/similarity/SimilarityPreset.hpp"

#include <QDialog>

class QButtonGroup;
class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;
class QTabWidget;

namespace brevant::gui {

class FolderList;
class PhotoCleanupModel;
class Skins;

// Preferences, applied as they change: the keeper priorities, the inbox and
// protected folders, the similarity preset, the skin, and where Brevant
// keeps its data.
class SettingsWindow : public QDialog {
    Q_OBJECT

public:
    SettingsWindow(PhotoCleanupModel& model, Skins& skins, QWidget* parent = nullptr);

    [[nodiscard]] QTabWidget* pages() const { return pages_; }

    // Every priority, the chosen ones checked and first, in the user's order.
    [[nodiscard]] QListWidget* priorities() const { return priorities_; }

    [[nodiscard]] QPushButton* resetPrioritiesButton() const { return resetPriorities_; }

    // The order the list shows: its checked entries, top to bottom.
    [[nodiscard]] std::vector<KeeperPolicy::Priority> shownPriorities() const;

    [[nodiscard]] FolderList* inboxFolders() const { return inbox_; }

    [[nodiscard]] FolderList* protectedFolders() const { return protected_; }

    [[nodiscard]] QButtonGroup* presets() const { return presets_; }

    [[nodiscard]] QComboBox* skinChoice() const { return skin_; }

    [[nodiscard]] QString dataFolderText() const;

private:
    QWidget* keeperPage();
    void showPriorities(const std::vector<KeeperPolicy::Priority>& chosen);
    QWidget* foldersPage();
    QWidget* similarityPage();
    QWidget* appearancePage();
    QWidget* dataPage();
    void showSettings();

    PhotoCleanupModel& model_;
    Skins& skins_;
    QTabWidget* pages_;
    QListWidget* priorities_ = nullptr;
    QPushButton* resetPriorities_ = nullptr;
    FolderList* inbox_ = nullptr;
    FolderList* protected_ = nullptr;
    QButtonGroup* presets_ = nullptr;
    QComboBox* skin_ = nullptr;
    QLabel* dataFolder_ = nullptr;
};

} // namespace brevant::gui
