#pragma once

#include "engine/similarity/SimilarityPreset.hpp"

#include <QDialog>

class QButtonGroup;
class QComboBox;
class QLabel;
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

    [[nodiscard]] FolderList* inboxFolders() const { return inbox_; }

    [[nodiscard]] FolderList* protectedFolders() const { return protected_; }

    [[nodiscard]] QButtonGroup* presets() const { return presets_; }

    [[nodiscard]] QComboBox* skinChoice() const { return skin_; }

    [[nodiscard]] QString dataFolderText() const;

private:
    QWidget* foldersPage();
    QWidget* similarityPage();
    QWidget* appearancePage();
    QWidget* dataPage();
    void showSettings();

    PhotoCleanupModel& model_;
    Skins& skins_;
    QTabWidget* pages_;
    FolderList* inbox_ = nullptr;
    FolderList* protected_ = nullptr;
    QButtonGroup* presets_ = nullptr;
    QComboBox* skin_ = nullptr;
    QLabel* dataFolder_ = nullptr;
};

} // namespace brevant::gui
