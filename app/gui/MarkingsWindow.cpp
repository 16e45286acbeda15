#include "MarkingsWindow.hpp"

#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"

#include <QDesktopServices>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QUrl>
#include <QVBoxLayout>

#include <filesystem>

namespace brevant::gui {

namespace {

QString heading(const CatalogMarking& marking) {
    std::string name = std::filesystem::path(marking.catalogPath()).filename().string();
    return QStringLiteral("%1 — %2").arg(catalog_texts::application(marking.scope()), qtText(name));
}

QString summary(const CatalogMarking& marking) {
    QString line =
        QStringLiteral("%1 · %2").arg(catalog_texts::dateText(marking.date()),
                                      catalog_texts::done(marking.scope(), marking.count()));
    return marking.restored() ? line + QStringLiteral(" · undone") : line;
}

QString undoneText(const CatalogMarking& marking) {
    return catalog_texts::undone(marking.scope());
}

} // namespace

MarkingsWindow::MarkingsWindow(const std::string& dataFolder, QWidget* parent)
    : QDialog(parent)
    , markings_(dataFolder)
    , list_(new QVBoxLayout)
    , empty_(
          parts::label(QStringLiteral("No catalog has been marked or tagged yet."), "muted", this))
    , worker_(*this) {
    setWindowTitle(QStringLiteral("Markings and Taggings"));
    resize(780, 640);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->setSpacing(10);
    layout->addWidget(parts::label(QStringLiteral("Markings and Taggings"), "title", this));
    layout->addWidget(parts::titleRule(this));
    layout->addWidget(parts::label(
        QStringLiteral("Every marking of a Lightroom Classic catalog and every tagging of a "
                       "Capture One catalog, newest first. Kept on this computer only."),
        "muted", this));
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* inside = new QWidget(scroll);
    auto* column = new QVBoxLayout(inside);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(empty_);
    column->addLayout(list_);
    column->addStretch(1);
    scroll->setWidget(inside);
    layout->addWidget(scroll, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    auto* close = new QPushButton(QStringLiteral("Close"), this);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    buttons->addWidget(close);
    layout->addLayout(buttons);
    reload();
}

MarkingsWindow::~MarkingsWindow() = default;

void MarkingsWindow::reload() {
    for (auto& row : rows_) {
        delete row.card;
    }
    rows_.clear();
    for (auto& marking : markings_.history()) {
        addRow(std::move(marking));
    }
    empty_->setVisible(rows_.empty());
}

void MarkingsWindow::addRow(CatalogMarking marking) {
    Row row{.marking = std::move(marking)};
    QFrame* card = parts::card(this);
    auto* box = qobject_cast<QVBoxLayout*>(card->layout());
    row.card = card;
    row.lines = {parts::label(heading(row.marking), "section", card),
                 parts::label(summary(row.marking), nullptr, card),
                 parts::label(QStringLiteral("Catalog: %1").arg(qtText(row.marking.catalogPath())),
                              "muted", card),
                 parts::label(QStringLiteral("Backup: %1").arg(qtText(row.marking.backupPath())),
                              "muted", card)};
    if (!row.marking.restored()) {
        // How to finish in the catalog's own application.
        row.lines.push_back(
            parts::label(catalog_texts::finishNote(row.marking.scope()), nullptr, card));
    }
    for (QLabel* line : row.lines) {
        box->addWidget(line);
    }
    row.note = parts::label(catalog_texts::undoNote(row.marking.scope()), "muted", card);
    // Said before an undo; after one it no longer applies.
    row.note->setVisible(!row.marking.restored());
    box->addWidget(row.note);
    auto it = statuses_.find(row.marking.id());
    row.status = parts::notice(it != statuses_.end() ? it->second : QString(), card)
                     ->findChild<QLabel*>(QStringLiteral("noticeText"));
    auto* status = qobject_cast<QFrame*>(row.status->parentWidget());
    status->setVisible(!row.status->text().isEmpty());
    box->addWidget(status);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    row.backup = new QPushButton(QStringLiteral("Show Backup"), card);
    row.backup->setToolTip(QStringLiteral("Open the folder holding the backup"));
    row.undo = new QPushButton(
        row.marking.restored() ? QStringLiteral("Undone") : QStringLiteral("Undo"), card);
    row.undo->setEnabled(!row.marking.restored() && !undoing_);
    buttons->addWidget(row.backup);
    buttons->addWidget(row.undo);
    box->addLayout(buttons);
    list_->addWidget(card);

    int index = static_cast<int>(rows_.size());
    connect(row.backup, &QPushButton::clicked, this, [this, index] { showBackup(index); });
    connect(row.undo, &QPushButton::clicked, this, [this, index] { undo(index); });
    rows_.push_back(std::move(row));
}

QStringList MarkingsWindow::lines(int row) const {
    QStringList texts;
    for (const QLabel* line : rows_.at(row).lines) {
        texts.push_back(line->text());
    }
    return texts;
}

QString MarkingsWindow::noteText(int row) const {
    const QLabel* note = rows_.at(row).note;
    return note->isHidden() ? QString() : note->text();
}

QString MarkingsWindow::statusText(int row) const {
    return rows_.at(row).status->text();
}

QPushButton* MarkingsWindow::undoButton(int row) const {
    return rows_.at(row).undo;
}

QPushButton* MarkingsWindow::backupButton(int row) const {
    return rows_.at(row).backup;
}

QString MarkingsWindow::emptyText() const {
    return empty_->isHidden() ? QString() : empty_->text();
}

void MarkingsWindow::showBackup(int row) const {
    std::string folder =
        std::filesystem::path(rows_.at(row).marking.backupPath()).parent_path().string();
    QDesktopServices::openUrl(QUrl::fromLocalFile(qtText(folder)));
}

void MarkingsWindow::undo(int row) {
    if (undoing_ || rows_.at(row).marking.restored()) {
        return;
    }
    undoing_ = true;
    for (auto& one : rows_) {
        one.undo->setEnabled(false);
    }
    rows_.at(row).undo->setText(QStringLiteral("Undoing…"));
    const CatalogMarking& marking = rows_.at(row).marking;
    worker_.run(
        [markings = markings_, marking](const CancellationFlag&) { return markings.undo(marking); },
        [this, id = marking.id()](const std::optional<std::string>& refusal) {
            finishUndo(id, refusal);
        });
}

void MarkingsWindow::finishUndo(const Uuid& id, const std::optional<std::string>& refusal) {
    undoing_ = false;
    for (const auto& row : rows_) {
        if (row.marking.id() == id) {
            statuses_[id] = refusal ? qtText(*refusal) : undoneText(row.marking);
        }
    }
    reload();
    Q_EMIT undoFinished();
}

} // namespace brevant::gui
