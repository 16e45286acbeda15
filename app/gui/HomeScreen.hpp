#pragma once

#include "app/gui/CleanupSettings.hpp"
#include "engine/similarity/SimilarityPreset.hpp"

#include <QWidget>

#include <map>

class QButtonGroup;
class QFrame;
class QLabel;
class QPushButton;
class QRadioButton;
class QStackedWidget;

namespace brevant::gui {

class FolderList;
class PhotoCleanupModel;
class ResumeOffer;

// Where to look and what to look for, then Scan: the folders to scan, the
// folders whose copies are always kept, the scope (folders or a catalog),
// the mode with the similarity presets, and the Scan button.
class HomeScreen : public QWidget {
    Q_OBJECT

public:
    explicit HomeScreen(PhotoCleanupModel& model, QWidget* parent = nullptr);

    [[nodiscard]] FolderList* sources() const { return sources_; }

    [[nodiscard]] FolderList* protectedFolders() const { return protected_; }

    [[nodiscard]] QRadioButton* modeButton(CleanupSettings::Mode mode) const;
    [[nodiscard]] QRadioButton* presetButton(SimilarityPreset preset) const;
    [[nodiscard]] QRadioButton* scopeButton(CleanupSettings::Scope scope) const;

    [[nodiscard]] QPushButton* scanButton() const { return scan_; }

    // Above what to look for, while a review was saved.
    [[nodiscard]] ResumeOffer* resumeOffer() const { return resume_; }

    // Beside Scan: smaller copies of the big photos and videos in the
    // folders instead of duplicates.
    [[nodiscard]] QPushButton* compressButton() const { return compress_; }

    // The sentence under the Scan button ("" when none).
    [[nodiscard]] QString noticeText() const;
    // What the Scan button will do, in words.
    [[nodiscard]] QString summaryText() const;

    void showNotice(const QString& text);

    // What a catalog scope's page shows: the chosen catalog and the notice.
    [[nodiscard]] QString catalogText(CleanupSettings::Scope scope) const;
    [[nodiscard]] QString catalogNoticeText(CleanupSettings::Scope scope) const;
    [[nodiscard]] QPushButton* chooseCatalogButton(CleanupSettings::Scope scope) const;

Q_SIGNALS:
    void compressRequested();

private:
    QWidget* whereCard();
    QWidget* protectedCard();
    QWidget* whatCard();
    QWidget* catalogPage(CleanupSettings::Scope scope);
    void showCatalog(CleanupSettings::Scope scope);
    void chooseCatalogFolder(CleanupSettings::Scope scope);
    void showSettings();

    PhotoCleanupModel& model_;
    FolderList* sources_ = nullptr;
    FolderList* protected_ = nullptr;
    QButtonGroup* scopes_ = nullptr;
    QButtonGroup* modes_ = nullptr;
    QButtonGroup* presets_ = nullptr;
    QStackedWidget* scopePages_ = nullptr;
    std::map<SimilarityPreset, QLabel*> presetExplanations_;

    struct CatalogPage {
        QLabel* path = nullptr;
        QFrame* notice = nullptr;
        QPushButton* choose = nullptr;
    };

    std::map<CleanupSettings::Scope, CatalogPage> catalogPages_;
    QPushButton* scan_ = nullptr;
    ResumeOffer* resume_ = nullptr;
    QPushButton* compress_ = nullptr;
    QLabel* summary_ = nullptr;
    QFrame* notice_ = nullptr;
};

} // namespace brevant::gui
