#include "SettingsWindow.hpp"

#include "app/gui/FolderList.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "app/gui/Skins.hpp"
#include "app/gui/WindowTexts.hpp"

#include <QButtonGroup>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace brevant::gui {

namespace {

QVBoxLayout* pageLayout(QWidget* page) {
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(16, 16, 16, 16);
    layout->setSpacing(8);
    return layout;
}

} // namespace

SettingsWindow::SettingsWindow(PhotoCleanupModel& model, Skins& skins, QWidget* parent)
    : QDialog(parent)
    , model_(model)
    , skins_(skins)
    , pages_(new QTabWidget(this)) {
    setWindowTitle(tr("Brevant Preferences"));
    pages_->addTab(keeperPage(), tr("Keeper"));
    pages_->addTab(foldersPage(), tr("Folders"));
    pages_->addTab(similarityPage(), tr("Similarity"));
    pages_->addTab(appearancePage(), tr("Appearance"));
    pages_->addTab(dataPage(), tr("Data"));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(pages_, 1);
    layout->addWidget(buttons);
    resize(620, 520);

    connect(&model_, &PhotoCleanupModel::settingsChanged, this, &SettingsWindow::showSettings);
    connect(&skins_, &Skins::applied, this, &SettingsWindow::showSettings);
    showSettings();
}

QWidget* SettingsWindow::keeperPage() {
    auto* page = new QWidget(this);
    QVBoxLayout* layout = pageLayout(page);
    layout->addWidget(parts::label(tr("Which copy to keep"), "section", page));
    layout->addWidget(parts::label(
        tr("After your locks, your protected folders and the copies that must stay, these "
           "decide, from the top. Drag to change the order; uncheck what should not count."),
        "muted", page));
    priorities_ = new QListWidget(page);
    priorities_->setDragDropMode(QAbstractItemView::InternalMove);
    priorities_->setDefaultDropAction(Qt::MoveAction);
    priorities_->setSelectionMode(QAbstractItemView::SingleSelection);
    layout->addWidget(priorities_, 1);
    resetPriorities_ = new QPushButton(tr("Reset to Standard"), page);
    layout->addWidget(resetPriorities_, 0, Qt::AlignLeft);

    auto changed = [this] { model_.setPriorities(shownPriorities()); };
    connect(priorities_, &QListWidget::itemChanged, this, changed);
    connect(priorities_->model(), &QAbstractItemModel::rowsMoved, this, changed);
    connect(resetPriorities_, &QPushButton::clicked, this,
            [this] { model_.setPriorities(KeeperPolicy::standardPriorities()); });
    return page;
}

void SettingsWindow::showPriorities(const std::vector<KeeperPolicy::Priority>& chosen) {
    if (shownPriorities() == chosen && priorities_->count() > 0) {
        return;
    }
    QSignalBlocker block(priorities_);
    priorities_->clear();
    auto add = [this](KeeperPolicy::Priority priority, bool checked) {
        auto* item = new QListWidgetItem(qtText(label(priority)), priorities_);
        item->setData(Qt::UserRole, static_cast<int>(priority));
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable |
                       Qt::ItemIsDragEnabled);
        item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
        item->setToolTip(qtText(reason(priority)));
    };
    for (auto priority : chosen) {
        add(priority, true);
    }
    for (auto priority : EnumCases<KeeperPolicy::Priority>::kAll) {
        if (std::ranges::find(chosen, priority) == chosen.end()) {
            add(priority, false);
        }
    }
}

std::vector<KeeperPolicy::Priority> SettingsWindow::shownPriorities() const {
    std::vector<KeeperPolicy::Priority> shown;
    for (int row = 0; row < priorities_->count(); ++row) {
        const QListWidgetItem* item = priorities_->item(row);
        if (item->checkState() == Qt::Checked) {
            shown.push_back(static_cast<KeeperPolicy::Priority>(item->data(Qt::UserRole).toInt()));
        }
    }
    return shown;
}

QWidget* SettingsWindow::foldersPage() {
    auto* page = new QWidget(this);
    QVBoxLayout* layout = pageLayout(page);
    layout->addWidget(parts::label(tr("Inbox folders"), "section", page));
    layout->addWidget(parts::label(QLatin1String(texts::kInboxHint), "muted", page));
    inbox_ = new FolderList(tr("Choose an Inbox Folder"), {}, page);
    layout->addWidget(inbox_, 1);
    layout->addSpacing(8);
    layout->addWidget(parts::label(tr("Always keep copies here"), "section", page));
    layout->addWidget(parts::label(QLatin1String(texts::kProtectedHint), "muted", page));
    protected_ = new FolderList(tr("Choose a Folder Whose Copies Are Always Kept"), {}, page);
    layout->addWidget(protected_, 1);
    connect(inbox_, &FolderList::foldersChanged, this,
            [this](const std::vector<std::string>& folders) { model_.setInboxFolders(folders); });
    connect(
        protected_, &FolderList::foldersChanged, this,
        [this](const std::vector<std::string>& folders) { model_.setProtectedFolders(folders); });
    return page;
}

QWidget* SettingsWindow::similarityPage() {
    auto* page = new QWidget(this);
    QVBoxLayout* layout = pageLayout(page);
    layout->addWidget(parts::label(tr("How alike two pictures must be"), "section", page));
    presets_ = new QButtonGroup(page);
    for (SimilarityPreset preset : EnumCases<SimilarityPreset>::kAll) {
        auto* button = new QRadioButton(qtText(displayName(preset)), page);
        presets_->addButton(button, static_cast<int>(preset));
        layout->addWidget(button);
        QLabel* explanation = parts::label(qtText(brevant::explanation(preset)), "muted", page);
        explanation->setWordWrap(true);
        explanation->setContentsMargins(26, 0, 0, 6);
        layout->addWidget(explanation);
    }
    layout->addWidget(parts::label(
        tr("Changing it regroups the last scan at once, without measuring again."), "muted", page));
    layout->addStretch();
    connect(presets_, &QButtonGroup::idClicked, this,
            [this](int id) { model_.setPreset(static_cast<SimilarityPreset>(id)); });
    return page;
}

QWidget* SettingsWindow::appearancePage() {
    auto* page = new QWidget(this);
    QVBoxLayout* layout = pageLayout(page);
    layout->addWidget(parts::label(tr("Skin"), "section", page));
    skin_ = new QComboBox(page);
    for (const QString& name : Skins::names()) {
        skin_->addItem(Skins::title(name), name);
    }
    skin_->setMinimumWidth(220);
    layout->addWidget(skin_, 0, Qt::AlignLeft);
    layout->addWidget(parts::label(
        tr("Classic follows your desktop's light or dark style. Every skin keeps text readable "
           "at a contrast of at least 4.5 to 1."),
        "muted", page));
    layout->addStretch();
    connect(skin_, &QComboBox::activated, this, [this](int index) {
        QString name = skin_->itemData(index).toString();
        skins_.apply(name);
        model_.setSkin(name.toStdString());
    });
    return page;
}

QWidget* SettingsWindow::dataPage() {
    auto* page = new QWidget(this);
    QVBoxLayout* layout = pageLayout(page);
    layout->addWidget(parts::label(tr("Where Brevant keeps its data"), "section", page));
    dataFolder_ = parts::label(qtText(model_.dataFolder()), nullptr, page);
    dataFolder_->setWordWrap(true);
    layout->addWidget(dataFolder_);
    layout->addWidget(parts::label(QLatin1String(texts::kDataFolderExplanation), "muted", page));
    auto* open = new QPushButton(tr("Open in File Manager"), page);
    open->setEnabled(QFileInfo(qtText(model_.dataFolder())).isDir());
    connect(open, &QPushButton::clicked, this, [this] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(qtText(model_.dataFolder())));
    });
    layout->addWidget(open, 0, Qt::AlignLeft);
    layout->addStretch();
    return page;
}

void SettingsWindow::showSettings() {
    const CleanupSettings& settings = model_.settings();
    showPriorities(settings.priorities);
    inbox_->setFolders(settings.inboxFolders);
    protected_->setFolders(settings.protectedFolders);
    {
        QSignalBlocker block(presets_);
        presets_->button(static_cast<int>(settings.preset))->setChecked(true);
    }
    QSignalBlocker block(skin_);
    int index =
        skin_->findData(skins_.current().isEmpty() ? qtText(settings.skin) : skins_.current());
    skin_->setCurrentIndex(std::max(index, 0));
}

QString SettingsWindow::dataFolderText() const {
    return dataFolder_->text();
}

} // namespace brevant::gui
