#include "FolderList.hpp"

#include "app/gui/QtText.hpp"

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace brevant::gui {

namespace {

constexpr int kPathRole = Qt::UserRole;

} // namespace

FolderList::FolderList(const QString& chooserTitle, const QString& emptyHint, QWidget* parent)
    : QWidget(parent)
    , chooserTitle_(chooserTitle)
    , list_(new QListWidget(this))
    , hint_(new QLabel(emptyHint, this))
    , add_(new QPushButton(tr("Add Folder…"), this))
    , remove_(new QPushButton(tr("Remove"), this)) {
    setAcceptDrops(true);
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setMinimumHeight(72);
    // Room for a handful of folders; more scroll.
    list_->setMaximumHeight(150);
    hint_->setProperty("role", "muted");
    hint_->setWordWrap(true);
    hint_->setVisible(!emptyHint.isEmpty());

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(add_);
    buttons->addWidget(remove_);
    buttons->addStretch();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(list_, 1);
    layout->addWidget(hint_);
    layout->addLayout(buttons);

    connect(add_, &QPushButton::clicked, this, &FolderList::chooseFolder);
    connect(remove_, &QPushButton::clicked, this, &FolderList::removeSelected);
    connect(list_, &QListWidget::itemSelectionChanged, this,
            [this] { remove_->setEnabled(!list_->selectedItems().isEmpty()); });
    refresh();
}

void FolderList::setFolders(const std::vector<std::string>& folders) {
    if (folders == folders_) {
        return;
    }
    folders_ = folders;
    refresh();
}

void FolderList::addFolders(const std::vector<std::string>& folders) {
    bool changed = false;
    for (const auto& folder : folders) {
        if (!folder.empty() && std::ranges::find(folders_, folder) == folders_.end()) {
            folders_.push_back(folder);
            changed = true;
        }
    }
    if (changed) {
        refresh();
        Q_EMIT foldersChanged(folders_);
    }
}

void FolderList::removeSelected() {
    std::vector<std::string> gone;
    for (const auto* item : list_->selectedItems()) {
        gone.push_back(item->data(kPathRole).toByteArray().toStdString());
    }
    if (gone.empty()) {
        return;
    }
    std::erase_if(folders_, [&](const std::string& folder) {
        return std::ranges::find(gone, folder) != gone.end();
    });
    refresh();
    Q_EMIT foldersChanged(folders_);
}

void FolderList::chooseFolder() {
    QString start = folders_.empty() ? QDir::homePath() : qtText(folders_.back());
    QString chosen = QFileDialog::getExistingDirectory(this, chooserTitle_, start);
    if (!chosen.isEmpty()) {
        addFolders({pathBytes(chosen)});
    }
}

std::vector<std::string> FolderList::droppedFolders(const QList<QUrl>& urls) {
    std::vector<std::string> folders;
    for (const QUrl& url : urls) {
        if (!url.isLocalFile()) {
            continue;
        }
        QString path = url.toLocalFile();
        if (QFileInfo(path).isDir()) {
            folders.push_back(pathBytes(QDir::cleanPath(path)));
        }
    }
    return folders;
}

void FolderList::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls() && !droppedFolders(event->mimeData()->urls()).empty()) {
        event->acceptProposedAction();
    }
}

void FolderList::dropEvent(QDropEvent* event) {
    auto folders = droppedFolders(event->mimeData()->urls());
    if (folders.empty()) {
        return;
    }
    event->acceptProposedAction();
    addFolders(folders);
}

void FolderList::refresh() {
    list_->clear();
    for (const auto& folder : folders_) {
        auto* item = new QListWidgetItem(qtText(folder), list_);
        item->setData(kPathRole, QByteArray::fromStdString(folder));
        item->setToolTip(qtText(folder));
    }
    remove_->setEnabled(false);
}

} // namespace brevant::gui
