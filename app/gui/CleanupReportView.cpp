#include "CleanupReportView.hpp"

#include "app/gui/CleanupTexts.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "engine/cleanup/JournalTexts.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/support/PathNames.hpp"

#include <QDateTime>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

namespace brevant::gui {

namespace {

// The item's index in the report, so that paths keep their exact bytes.
constexpr int kIndexRole = Qt::UserRole;
constexpr int kMovedRole = Qt::UserRole + 1;
constexpr int kOutcomeWidth = 460;

const char* const kFigures[] = {"Moved",   "Skipped",  "Failed",
                                "Unknown", "Put back", "In the Trash"};

QString dateText(Date date) {
    auto seconds = static_cast<qint64>(date.unixSeconds());
    return QLocale().toString(QDateTime::fromSecsSinceEpoch(seconds), QLocale::ShortFormat);
}

QString joined(const QStringList& sentences) {
    return sentences.join(QLatin1Char('\n'));
}

// At most this many sentences about single pictures; the list above has
// each picture's outcome, and a longer notice would push the buttons off
// the screen.
constexpr qsizetype kMostSentences = 3;

// What a Put Back did, in a few lines: one picture is named with where it
// went; of several, those back in their own places are counted, and the
// others named, the first few of them.
QStringList putBackSentences(const std::vector<PutBackResult>& results) {
    QStringList sentences;
    if (results.size() == 1) {
        const auto& [removal, outcome] = results.front();
        sentences.push_back(qtText(outcome.message(PathNames::lastComponent(removal.path))));
        return sentences;
    }
    std::int64_t home = 0;
    QStringList others;
    for (const auto& [removal, outcome] : results) {
        if (outcome.kind == RestoreOutcome::Kind::restored && outcome.path == removal.path) {
            ++home;
            continue;
        }
        std::string name = PathNames::lastComponent(removal.path);
        QString sentence = qtText(outcome.message(name));
        // Each sentence says which picture it is about.
        if (outcome.kind == RestoreOutcome::Kind::occupied) {
            sentence = QStringLiteral("%1: %2").arg(qtText(name), sentence);
        }
        others.push_back(sentence);
    }
    if (home == 1) {
        sentences.push_back(QObject::tr("1 picture is back where it was."));
    } else if (home > 1) {
        sentences.push_back(QObject::tr("%1 pictures are back where they were.")
                                .arg(QLocale().toString(static_cast<qlonglong>(home))));
    }
    if (others.size() > kMostSentences) {
        qsizetype rest = others.size() - kMostSentences;
        others.resize(kMostSentences);
        others.push_back(QObject::tr("%1 more: see the outcome of each above.")
                             .arg(countText(rest, "picture", "pictures")));
    }
    sentences.append(others);
    return sentences;
}

} // namespace

CleanupReportView::CleanupReportView(CleanupController& cleanups, QWidget* parent)
    : QWidget(parent)
    , cleanups_(cleanups)
    , title_(parts::label({}, "title", this))
    , explanation_(parts::label(qtText(journal_texts::interruptedExplanation()), nullptr, this))
    , started_(parts::label({}, "muted", this))
    , figures_(new QWidget(this))
    , note_(parts::notice(qtText(Restorer::generalNote()), this))
    , items_(new QTreeWidget(this))
    , message_(parts::notice({}, this))
    , putBack_(new QPushButton(tr("Put Back"), this))
    , putBackAll_(new QPushButton(tr("Put Back All"), this))
    , anotherName_(new QPushButton(tr("Put Back Under Another Name"), this)) {
    explanation_->setWordWrap(true);
    auto* grid = new QGridLayout(figures_);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(28);
    int column = 0;
    for (const char* name : kFigures) {
        QLabel* value = parts::label(QStringLiteral("0"), "figure", figures_);
        value->setObjectName(QLatin1String(name));
        value->setAlignment(Qt::AlignCenter);
        QLabel* caption = parts::label(tr(name), "muted", figures_);
        caption->setObjectName(QLatin1String(name) + QStringLiteral("Caption"));
        caption->setAlignment(Qt::AlignCenter);
        grid->addWidget(value, 0, column);
        grid->addWidget(caption, 1, column);
        ++column;
    }
    grid->setColumnStretch(column, 1);

    items_->setHeaderLabels({tr("Picture"), tr("Outcome"), tr("Folder")});
    items_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    items_->setRootIsDecorated(false);
    items_->setWordWrap(true);
    items_->setUniformRowHeights(false);
    // Long folders lose their middle, where the names differ least.
    items_->setTextElideMode(Qt::ElideMiddle);
    items_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    items_->header()->setSectionResizeMode(1, QHeaderView::Interactive);
    items_->header()->resizeSection(1, kOutcomeWidth);
    message_->hide();
    anotherName_->hide();
    putBack_->setToolTip(tr("Put the selected pictures back where they were"));
    putBackAll_->setToolTip(tr("Put every picture of this cleanup that is in the Trash back"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(putBack_);
    buttons->addWidget(putBackAll_);
    buttons->addWidget(anotherName_);
    buttons->addStretch();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);
    layout->addWidget(title_);
    layout->addWidget(explanation_);
    layout->addWidget(started_);
    layout->addWidget(figures_);
    layout->addWidget(note_);
    layout->addWidget(items_, 1);
    layout->addWidget(message_);
    layout->addLayout(buttons);

    connect(items_, &QTreeWidget::itemSelectionChanged, this, &CleanupReportView::updateButtons);
    connect(putBack_, &QPushButton::clicked, this, &CleanupReportView::putBackSelected);
    connect(putBackAll_, &QPushButton::clicked, this, &CleanupReportView::putBackAll);
    connect(anotherName_, &QPushButton::clicked, this, &CleanupReportView::putBackUnderAnotherName);
    connect(&cleanups_, &CleanupController::putBackFinished, this, &CleanupReportView::showPutBack);
}

void CleanupReportView::setReport(const CleanupReport& report) {
    if (!report_ || report_->journalPath != report.journalPath) {
        message_->hide();
        occupied_.clear();
        items_->clearSelection();
    }
    report_ = report;
    fill();
}

QString CleanupReportView::outcomeSentence(const ItemReport& item) {
    const ItemOutcome& outcome = item.outcome;
    switch (outcome.kind) {
    case ItemOutcome::Kind::movedToTrash:
        return tr(cleanup_texts::kInTrash);
    case ItemOutcome::Kind::restored:
        if (outcome.text == item.removal.path) {
            return tr("Put back where it was.");
        }
        return tr("Put back as “%1”.").arg(qtText(PathNames::lastComponent(outcome.text)));
    case ItemOutcome::Kind::skipped:
    case ItemOutcome::Kind::failed:
    case ItemOutcome::Kind::unknown:
        return qtText(outcome.text);
    }
    return {};
}

void CleanupReportView::fill() {
    if (!report_) {
        return;
    }
    const CleanupReport& report = *report_;
    title_->setText(qtText(journal_texts::title(report)));
    // How the report was come by: worked out after a crash, still running,
    // or read from a record with damaged lines.
    QStringList explained;
    if (report.reconciled) {
        explained << qtText(journal_texts::interruptedExplanation());
    }
    if (report.running) {
        explained << qtText(journal_texts::kRunning);
    }
    if (report.damage) {
        explained << qtText(*report.damage);
    }
    explanation_->setText(explained.join(QLatin1Char(' ')));
    explanation_->setVisible(!explained.isEmpty());
    // Emptying the Trash matters only while something of this run is in it.
    note_->setVisible(report.moved() > 0);
    started_->setText(
        tr("Started %1 · %2")
            .arg(dateText(report.started), countText(static_cast<std::int64_t>(report.items.size()),
                                                     "picture planned", "pictures planned")));
    const std::pair<const char*, int> counts[] = {
        {"Moved", report.moved()},     {"Skipped", report.skipped()},   {"Failed", report.failed()},
        {"Unknown", report.unknown()}, {"Put back", report.restored()},
    };
    QLocale locale;
    for (const auto& [name, count] : counts) {
        figures_->findChild<QLabel*>(QLatin1String(name))->setText(locale.toString(count));
    }
    bool anyRestored = report.restored() > 0;
    figures_->findChild<QLabel*>(QStringLiteral("Put back"))->setVisible(anyRestored);
    figures_->findChild<QLabel*>(QStringLiteral("Put backCaption"))->setVisible(anyRestored);
    figures_->findChild<QLabel*>(QStringLiteral("In the Trash"))
        ->setText(byteText(report.freedBytes()));

    // The selection outlives a Put Back that reads the journal again.
    std::vector<std::string> selected;
    const auto rows = items_->selectedItems();
    for (const QTreeWidgetItem* row : rows) {
        QVariant index = row->data(0, kIndexRole);
        if (index.isValid() && index.toULongLong() < report.items.size()) {
            selected.push_back(report.items[index.toULongLong()].removal.path);
        }
    }
    items_->clear();
    for (std::size_t index = 0; index < report.items.size(); ++index) {
        const ItemReport& item = report.items[index];
        const std::string& path = item.removal.path;
        auto* row = new QTreeWidgetItem(items_, {qtText(PathNames::lastComponent(path)),
                                                 outcomeSentence(item),
                                                 qtText(PathNames::parentFolder(path))});
        row->setData(0, kIndexRole, static_cast<qulonglong>(index));
        row->setData(0, kMovedRole, item.outcome.kind == ItemOutcome::Kind::movedToTrash);
        row->setToolTip(0, qtText(path));
        row->setToolTip(1, row->text(1));
        for (const auto& note : item.notes) {
            auto* child = new QTreeWidgetItem(row, {qtText(note)});
            child->setFirstColumnSpanned(true);
            child->setFlags(Qt::ItemIsEnabled);
            QFont font = child->font(0);
            font.setItalic(true);
            child->setFont(0, font);
        }
    }
    items_->expandAll();
    select(selected);
    updateButtons();
}

void CleanupReportView::updateButtons() {
    bool busy = cleanups_.isPuttingBack();
    bool anyMoved = false;
    for (int i = 0; i < items_->topLevelItemCount(); ++i) {
        anyMoved = anyMoved || items_->topLevelItem(i)->data(0, kMovedRole).toBool();
    }
    const auto selected = items_->selectedItems();
    bool selectedMoved = std::ranges::any_of(
        selected, [](const QTreeWidgetItem* row) { return row->data(0, kMovedRole).toBool(); });
    putBack_->setEnabled(!busy && selectedMoved);
    putBackAll_->setEnabled(!busy && anyMoved);
    anotherName_->setVisible(!occupied_.empty());
    anotherName_->setEnabled(!busy);
}

void CleanupReportView::putBackSelected() {
    if (!report_) {
        return;
    }
    std::vector<std::string> ids;
    const auto selected = items_->selectedItems();
    for (const QTreeWidgetItem* row : selected) {
        if (row->data(0, kMovedRole).toBool()) {
            auto index = static_cast<std::size_t>(row->data(0, kIndexRole).toULongLong());
            ids.push_back(report_->items[index].removal.path);
        }
    }
    startPutBack(std::move(ids), false);
}

void CleanupReportView::putBackAll() {
    if (!report_) {
        return;
    }
    std::vector<std::string> ids;
    for (const auto& item : report_->items) {
        if (item.outcome.kind == ItemOutcome::Kind::movedToTrash) {
            ids.push_back(item.removal.path);
        }
    }
    startPutBack(std::move(ids), false);
}

void CleanupReportView::putBackUnderAnotherName() {
    startPutBack(occupied_, true);
}

void CleanupReportView::startPutBack(std::vector<std::string> itemIDs, bool underAnotherName) {
    if (!report_ || itemIDs.empty() || cleanups_.isPuttingBack()) {
        return;
    }
    occupied_.clear();
    parts::noticeLabel(message_)->setText(tr(cleanup_texts::kPuttingBack));
    message_->show();
    cleanups_.putBack(report_->journalPath, std::move(itemIDs), underAnotherName);
    waiting_ = true;
    updateButtons();
}

void CleanupReportView::showPutBack(const std::optional<CleanupReport>& report,
                                    const std::vector<PutBackResult>& results) {
    // Only the view that asked takes the answer; the others just read again.
    bool asked = std::exchange(waiting_, false);
    if (report && report_ && report->journalPath == report_->journalPath) {
        CleanupReport reread = *report;
        reread.reconciled = report_->reconciled;
        report_ = reread;
        fill();
    }
    if (!asked) {
        updateButtons();
        return;
    }
    for (const auto& [removal, outcome] : results) {
        if (outcome.kind == RestoreOutcome::Kind::occupied) {
            occupied_.push_back(removal.path);
        }
    }
    QStringList sentences = putBackSentences(results);
    if (sentences.isEmpty()) {
        sentences.push_back(tr("Nothing was put back: none of these pictures is in the Trash."));
    }
    parts::noticeLabel(message_)->setText(joined(sentences));
    message_->show();
    updateButtons();
}

QString CleanupReportView::title() const {
    return title_->text();
}

QString CleanupReportView::explanation() const {
    return report_ && report_->reconciled ? explanation_->text() : QString();
}

QString CleanupReportView::figure(const QString& name) const {
    auto* value = figures_->findChild<QLabel*>(name);
    return value != nullptr ? value->text() : QString();
}

QString CleanupReportView::generalNote() const {
    return note_->isVisibleTo(this) ? parts::noticeLabel(note_)->text() : QString();
}

QString CleanupReportView::putBackMessage() const {
    return message_->isVisibleTo(this) ? parts::noticeLabel(message_)->text() : QString();
}

int CleanupReportView::row(const std::string& path) const {
    if (!report_) {
        return -1;
    }
    auto found = std::ranges::find_if(
        report_->items, [&](const ItemReport& item) { return item.removal.path == path; });
    return found == report_->items.end()
               ? -1
               : static_cast<int>(std::distance(report_->items.begin(), found));
}

QString CleanupReportView::outcomeText(int row) const {
    QTreeWidgetItem* item = items_->topLevelItem(row);
    return item != nullptr ? item->text(1) : QString();
}

void CleanupReportView::select(const std::vector<std::string>& paths) {
    items_->clearSelection();
    for (const auto& path : paths) {
        if (int found = row(path); found >= 0) {
            items_->topLevelItem(found)->setSelected(true);
        }
    }
}

} // namespace brevant::gui
