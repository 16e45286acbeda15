#include "HistoryScreen.hpp"

#include "app/gui/CleanupController.hpp"
#include "app/gui/CleanupReportView.hpp"
#include "app/gui/CleanupTexts.hpp"
#include "app/gui/CompressionController.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "engine/cleanup/JournalTexts.hpp"
#include "engine/compression/CompressionReport.hpp"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace brevant::gui {

HistoryScreen::HistoryScreen(CleanupController& cleanups, QWidget* parent)
    : QWidget(parent)
    , cleanups_(cleanups)
    , pages_(new QStackedWidget(this))
    , listPage_(new QWidget(pages_))
    , caption_(parts::label(qtText(journal_texts::historyCaption()), "muted", listPage_))
    , empty_(parts::label(tr(cleanup_texts::kReading), nullptr, listPage_))
    , list_(new QTreeWidget(listPage_))
    , openButton_(new QPushButton(tr("Open"), listPage_))
    , report_(new CleanupReportView(cleanups, pages_))
    , close_(parts::accentButton(tr("Done"), this)) {
    list_->setHeaderLabels({tr("Date"), tr("Pictures"), tr("Moved"), tr("Skipped"), tr("Failed"),
                            tr("Unknown"), tr("Put back"), tr("In the Trash")});
    list_->setRootIsDecorated(false);
    list_->setAllColumnsShowFocus(true);
    list_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    list_->header()->setStretchLastSection(false);
    openButton_->setEnabled(false);

    auto* listLayout = new QVBoxLayout(listPage_);
    listLayout->setContentsMargins(0, 0, 0, 0);
    listLayout->setSpacing(10);
    listLayout->addWidget(parts::label(tr(cleanup_texts::kHistoryTitle), "title", listPage_));
    listLayout->addWidget(caption_);
    listLayout->addWidget(empty_);
    listLayout->addWidget(list_, 1);
    auto* openRow = new QHBoxLayout;
    openRow->addWidget(openButton_);
    openRow->addStretch();
    listLayout->addLayout(openRow);

    pages_->addWidget(listPage_);
    pages_->addWidget(report_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(close_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 22, 28, 22);
    layout->addWidget(pages_, 1);
    layout->addLayout(buttons);

    connect(&cleanups_, &CleanupController::historyLoaded, this, &HistoryScreen::fill);
    connect(list_, &QTreeWidget::itemActivated, this,
            [this](QTreeWidgetItem* item) { open(list_->indexOfTopLevelItem(item)); });
    connect(list_, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* item) { openButton_->setEnabled(item != nullptr); });
    connect(openButton_, &QPushButton::clicked, this,
            [this] { open(list_->indexOfTopLevelItem(list_->currentItem())); });
    connect(close_, &QPushButton::clicked, this, &HistoryScreen::back);
}

void HistoryScreen::showCompressions(CompressionController& compressions) {
    compressions_ = &compressions;
    compressionTitle_ = parts::label(tr("Compressions"), "section", listPage_);
    compressionList_ = new QTreeWidget(listPage_);
    compressionList_->setHeaderLabels({tr("Date"), tr("Files"), tr("Compressed"),
                                       tr("Refused or passed over"), tr("Put back"), tr("Freed")});
    compressionList_->setRootIsDecorated(false);
    compressionList_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    compressionPage_ = new QWidget(pages_);
    compressionReport_ = new QPlainTextEdit(compressionPage_);
    compressionReport_->setReadOnly(true);
    compressionPutBack_ = new QPushButton(tr("Put Back All Originals"), compressionPage_);
    compressionPutBack_->setToolTip(
        tr("Returns every original still in the Trash to its place and moves its smaller copy "
           "to the Trash."));
    auto* pageLayout = new QVBoxLayout(compressionPage_);
    pageLayout->setContentsMargins(0, 0, 0, 0);
    pageLayout->addWidget(compressionReport_, 1);
    auto* putBackRow = new QHBoxLayout;
    putBackRow->addWidget(compressionPutBack_);
    putBackRow->addStretch();
    pageLayout->addLayout(putBackRow);
    pages_->addWidget(compressionPage_);
    auto* layout = static_cast<QVBoxLayout*>(listPage_->layout());
    layout->insertWidget(layout->count() - 1, compressionTitle_);
    layout->insertWidget(layout->count() - 1, compressionList_, 1);
    connect(compressions_, &CompressionController::historyLoaded, this,
            &HistoryScreen::fillCompressions);
    connect(compressionList_, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
        openCompression(compressionList_->indexOfTopLevelItem(item));
    });
    connect(compressionPutBack_, &QPushButton::clicked, this, [this] {
        compressionPutBack_->setEnabled(false);
        compressions_->putBackAll(compressionJournal_);
    });
    connect(compressions_, &CompressionController::putBackFinished, this,
            [this](const QStringList& lines, const std::optional<CompressionReport>& after) {
                if (after) {
                    showCompression(*after, lines);
                    return;
                }
                compressionReport_->setPlainText(lines.join(QLatin1Char('\n')));
            });
}

void HistoryScreen::reload() {
    pages_->setCurrentWidget(listPage_);
    close_->setText(tr("Done"));
    empty_->setText(tr(cleanup_texts::kReading));
    empty_->show();
    cleanups_.loadHistory();
    if (compressions_ != nullptr) {
        compressions_->loadHistory();
    }
}

void HistoryScreen::fillCompressions() {
    compressionList_->clear();
    QLocale locale;
    for (const auto& report : compressions_->history()) {
        auto started =
            QDateTime::fromSecsSinceEpoch(static_cast<qint64>(report.started.unixSeconds()));
        auto* row = new QTreeWidgetItem(
            compressionList_,
            {locale.toString(started, QLocale::ShortFormat),
             locale.toString(static_cast<qlonglong>(report.items.size())),
             locale.toString(report.compressed()), locale.toString(report.refused()),
             locale.toString(report.restored()), byteText(report.freedBytes())});
        for (int column = 1; column < row->columnCount(); ++column) {
            row->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    bool any = !compressions_->history().empty();
    compressionTitle_->setVisible(any);
    compressionList_->setVisible(any);
}

void HistoryScreen::openCompression(int row) {
    const auto& history = compressions_->history();
    if (row < 0 || row >= static_cast<int>(history.size())) {
        return;
    }
    showCompression(history[static_cast<std::size_t>(row)], {});
    pages_->setCurrentWidget(compressionPage_);
    close_->setText(tr("Back to History"));
}

// The compression's files and outcomes, under what the last Put Back said.
void HistoryScreen::showCompression(const CompressionReport& report,
                                    const QStringList& putBackLines) {
    compressionJournal_ = report.journalPath;
    QStringList lines = putBackLines;
    if (!lines.isEmpty()) {
        lines << QString();
    }
    for (const auto& item : report.items) {
        QString outcome;
        switch (item.outcome.kind) {
        case ItemOutcome::Kind::movedToTrash:
            outcome = tr("compressed into %1").arg(qtText(item.copyPath.value_or("")));
            break;
        case ItemOutcome::Kind::restored:
            // Back at its own place, or beside it when that was taken.
            outcome = item.outcome.text == item.item.path
                          ? tr("put back")
                          : tr("put back, at %1").arg(qtText(item.outcome.text));
            break;
        case ItemOutcome::Kind::skipped:
        case ItemOutcome::Kind::failed:
        case ItemOutcome::Kind::unknown:
            outcome = qtText(item.outcome.text);
            break;
        }
        lines << qtText(item.item.path) + QStringLiteral(": ") + outcome;
        for (const auto& note : item.notes) {
            lines << QStringLiteral("    ") + qtText(note);
        }
    }
    compressionReport_->setPlainText(lines.join(QLatin1Char('\n')));
    compressionPutBack_->setEnabled(report.compressed() > 0 && !report.running);
}

QString HistoryScreen::compressionReportText() const {
    return compressionReport_ != nullptr ? compressionReport_->toPlainText() : QString();
}

void HistoryScreen::fill() {
    const auto& history = cleanups_.history();
    list_->clear();
    QLocale locale;
    for (const auto& report : history) {
        auto started =
            QDateTime::fromSecsSinceEpoch(static_cast<qint64>(report.started.unixSeconds()));
        auto* row = new QTreeWidgetItem(
            list_, {locale.toString(started, QLocale::ShortFormat),
                    locale.toString(static_cast<qlonglong>(report.items.size())),
                    locale.toString(report.moved()), locale.toString(report.skipped()),
                    locale.toString(report.failed()), locale.toString(report.unknown()),
                    locale.toString(report.restored()), byteText(report.freedBytes())});
        for (int column = 1; column < row->columnCount(); ++column) {
            row->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    empty_->setText(tr(cleanup_texts::kNoHistory));
    empty_->setVisible(history.empty());
    if (!history.empty()) {
        list_->setCurrentItem(list_->topLevelItem(0));
    }
    if (pages_->currentWidget() == listPage_) {
        list_->setFocus();
    }
}

void HistoryScreen::open(int row) {
    const auto& history = cleanups_.history();
    if (row < 0 || row >= static_cast<int>(history.size())) {
        return;
    }
    report_->setReport(history[static_cast<std::size_t>(row)]);
    pages_->setCurrentWidget(report_);
    close_->setText(tr("Back to History"));
    report_->items()->setFocus();
}

void HistoryScreen::back() {
    if (pages_->currentWidget() == report_ ||
        (compressionPage_ != nullptr && pages_->currentWidget() == compressionPage_)) {
        // Put Back may have changed what the list counts.
        reload();
        return;
    }
    Q_EMIT finished();
}

bool HistoryScreen::showsReport() const {
    return pages_->currentWidget() == report_;
}

QString HistoryScreen::status() const {
    return empty_->isVisibleTo(listPage_) ? empty_->text() : QString();
}

QString HistoryScreen::caption() const {
    return caption_->text();
}

} // namespace brevant::gui
