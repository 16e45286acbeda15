#pragma once

#include <QWidget>

#include <string>
#include <vector>

class QLabel;
class QListWidget;
class QPushButton;

namespace brevant::gui {

// A list of folders with Add and Remove buttons that also takes folders
// dragged in from a file manager. Folders are kept as the file system's
// bytes; a folder already listed is not added twice.
class FolderList : public QWidget {
    Q_OBJECT

public:
    FolderList(const QString& chooserTitle, const QString& emptyHint, QWidget* parent = nullptr);

    // Shows these folders without telling anyone.
    void setFolders(const std::vector<std::string>& folders);

    [[nodiscard]] const std::vector<std::string>& folders() const { return folders_; }

    // Adds the folders the user chose or dropped; tells when any was new.
    void addFolders(const std::vector<std::string>& folders);
    void removeSelected();
    // Opens the folder chooser.
    void chooseFolder();

    [[nodiscard]] QListWidget* list() const { return list_; }

    [[nodiscard]] QPushButton* addButton() const { return add_; }

    [[nodiscard]] QPushButton* removeButton() const { return remove_; }

    // The local folders among dropped addresses.
    [[nodiscard]] static std::vector<std::string> droppedFolders(const QList<QUrl>& urls);

Q_SIGNALS:
    void foldersChanged(const std::vector<std::string>& folders);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void refresh();

    QString chooserTitle_;
    std::vector<std::string> folders_;
    QListWidget* list_;
    QLabel* hint_;
    QPushButton* add_;
    QPushButton* remove_;
};

} // namespace brevant::gui
