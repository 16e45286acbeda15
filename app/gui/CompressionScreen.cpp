#include "CompressionScreen.hpp"

#include "app/gui/CompressionController.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "engine/compression/CompressionTexts.hpp"
#include "engine/support/PathNames.hpp"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace brevant::gui {

namespace {

namespace texts = compression_texts;

QString nameOf(const std::string& path) {
    return qtText(PathNames::lastComponent(path));
}

// One line per file of the report, as the history shows it.
QString reportLines(const CompressionReport& report) {
    QStringList lines;
    for (const auto& item : report.items) {
        const auto& outcome = item.outcome;
        QString name = nameOf(item.item.path);
        switch (outcome.kind) {
        case ItemOutcome::Kind::movedToTrash:
            lines << QObject::tr("Compressed  %1 \u2192 %2 (%3 \u2192 %4)")
                         .arg(name, nameOf(item.copyPath.value_or("")),
                              byteText(item.item.snapshot.size), byteText(item.copyBytes));
            break;
        case ItemOutcome::Kind::restored:
            lines << QObject::tr("Put back  %1").arg(name);
            break;
        case ItemOutcome::Kind::failed:
            lines << QObject::tr("Refused  %1: %2").arg(name, qtText(outcome.text));
            break;
        case ItemOutcome::Kind::skipped:
            lines << QObject::tr("Passed over  %1: %2").arg(name, qtText(outcome.text));
            break;
        case ItemOutcome::Kind::unknown:
            lines << QObject::tr("Unknown  %1: %2").arg(name, qtText(outcome.text));
            break;
        }
        for (const auto& note : item.notes) {
            lines << QStringLiteral("    ") + qtText(note);
        }
    }
    lines << QString()
          << QObject::tr("%1 compressed, %2 refused or passed over. %3 is freed when the Trash is "
                         "emptied.")
                 .arg(report.compressed())
                 .arg(report.refused())
                 .arg(byteText(report.freedBytes()));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

CompressionScreen::CompressionScreen(CompressionController& controller, QWidget* parent)
    : QWidget(parent)
    , controller_(controller)
    , pages_(new QStackedWidget(this))
    , listPage_(new QWidget(pages_))
    , summary_(parts::label({}, "muted", listPage_))
    , smallest_(new QSpinBox(listPage_))
    , list_(new QTreeWidget(listPage_))
    , compress_(parts::accentButton(tr("Compress…"), listPage_))
    , runPage_(new QWidget(pages_))
    , file_(parts::label({}, "stage", runPage_))
    , bar_(new QProgressBar(runPage_))
    , stop_(new QPushButton(tr("Stop After This One"), runPage_))
    , reportPage_(new QWidget(pages_))
    , reportTitle_(parts::label({}, "title", reportPage_))
    , report_(new QPlainTextEdit(reportPage_))
    , done_(parts::accentButton(tr("Done"), reportPage_)) {
    list_->setHeaderLabels({tr("File"), tr("Kind"), tr("Size"), tr("Saves about")});
    list_->setRootIsDecorated(false);
    list_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    auto* back = new QPushButton(tr("Back"), listPage_);
    auto* listLayout = new QVBoxLayout(listPage_);
    listLayout->addWidget(parts::label(tr("Compress Big Photos and Videos"), "title", listPage_));
    listLayout->addWidget(
        parts::label(tr("Each file gets a smaller copy beside it (HEIC for photos, HEVC at 1080p "
                        "or less for videos). The copy is checked — it decodes, shows the same "
                        "picture the same way up, keeps the date and the sound, and is smaller — "
                        "and only then does the original go to the Trash."),
                     nullptr, listPage_));
    smallest_->setRange(0, 100'000);
    smallest_->setValue(static_cast<int>(CompressionRequest::kDefaultMinBytes / 1'000'000));
    smallest_->setSuffix(tr(" MB"));
    auto* sizeRow = new QHBoxLayout;
    sizeRow->addWidget(parts::label(tr("Leave out files smaller than"), nullptr, listPage_));
    sizeRow->addWidget(smallest_);
    sizeRow->addStretch();
    listLayout->addLayout(sizeRow);
    listLayout->addWidget(summary_);
    listLayout->addWidget(list_, 1);
    auto* listButtons = new QHBoxLayout;
    listButtons->addWidget(back);
    listButtons->addStretch();
    listButtons->addWidget(compress_);
    listLayout->addLayout(listButtons);

    auto* runLayout = new QVBoxLayout(runPage_);
    runLayout->addWidget(parts::label(tr("Compressing"), "title", runPage_));
    runLayout->addWidget(file_);
    runLayout->addWidget(bar_);
    runLayout->addStretch();
    auto* runButtons = new QHBoxLayout;
    runButtons->addStretch();
    runButtons->addWidget(stop_);
    runLayout->addLayout(runButtons);

    report_->setReadOnly(true);
    auto* reportLayout = new QVBoxLayout(reportPage_);
    reportLayout->addWidget(reportTitle_);
    reportLayout->addWidget(report_, 1);
    auto* reportButtons = new QHBoxLayout;
    reportButtons->addStretch();
    reportButtons->addWidget(done_);
    reportLayout->addLayout(reportButtons);

    pages_->addWidget(listPage_);
    pages_->addWidget(runPage_);
    pages_->addWidget(reportPage_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 22, 28, 22);
    layout->addWidget(pages_);

    connect(&controller_, &CompressionController::searching, this,
            &CompressionScreen::showSearching);
    connect(&controller_, &CompressionController::candidatesFound, this,
            &CompressionScreen::showCandidates);
    connect(&controller_, &CompressionController::runStarted, this, &CompressionScreen::showRun);
    connect(&controller_, &CompressionController::runProgress, this,
            &CompressionScreen::showProgress);
    connect(&controller_, &CompressionController::runFinished, this,
            &CompressionScreen::showReport);
    connect(back, &QPushButton::clicked, &controller_, &CompressionController::close);
    connect(smallest_, &QSpinBox::valueChanged, this, [this](int megabytes) {
        (void)controller_.find(static_cast<std::int64_t>(megabytes) * 1'000'000);
    });
    connect(done_, &QPushButton::clicked, &controller_, &CompressionController::close);
    connect(compress_, &QPushButton::clicked, this, [this] {
        if (confirm()) {
            (void)controller_.start();
        }
    });
    connect(stop_, &QPushButton::clicked, this, [this] {
        controller_.stopAfterThisOne();
        stop_->setEnabled(false);
        stop_->setText(tr("Stopping After This One…"));
    });
}

QString CompressionScreen::summaryText() const {
    return summary_->text();
}

QString CompressionScreen::reportText() const {
    return report_->toPlainText();
}

bool CompressionScreen::showsReport() const {
    return pages_->currentWidget() == reportPage_;
}

QString CompressionScreen::progressText() const {
    return file_->text();
}

void CompressionScreen::showSearching() {
    pages_->setCurrentWidget(listPage_);
    list_->clear();
    compress_->setEnabled(false);
    {
        // Shows the size this search uses without starting another.
        QSignalBlocker quiet(smallest_);
        smallest_->setValue(static_cast<int>(controller_.minBytes() / 1'000'000));
    }
    summary_->setText(tr("Looking for big photos and videos…"));
}

void CompressionScreen::showCandidates() {
    const auto& found = controller_.candidates();
    if (!found) {
        return;
    }
    list_->clear();
    QLocale locale;
    for (const auto& item : found->plan.items) {
        auto* row = new QTreeWidgetItem(list_, {qtText(item.path),
                                                QStringLiteral("%1 %2\u00d7%3")
                                                    .arg(qtText(item.format))
                                                    .arg(item.width)
                                                    .arg(item.height),
                                                byteText(item.snapshot.size),
                                                byteText(item.estimatedSaving)});
        row->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
        row->setTextAlignment(3, Qt::AlignRight | Qt::AlignVCenter);
    }
    for (const auto& passed : found->passedOver) {
        auto* row = new QTreeWidgetItem(
            list_, {qtText(passed.path), tr("passed over"), {}, qtText(passed.reason)});
        row->setDisabled(true);
    }
    auto count = static_cast<qlonglong>(found->plan.items.size());
    summary_->setText(count == 0
                          ? tr("Nothing to compress in these folders.")
                          : tr("%1 files, %2; a smaller copy of each saves about %3.")
                                .arg(locale.toString(count), byteText(found->plan.plannedBytes()),
                                     byteText(found->plan.estimatedSaving())));
    compress_->setEnabled(count > 0);
    compress_->setFocus();
}

bool CompressionScreen::confirm() {
    const auto& found = controller_.candidates();
    if (!found || found->plan.items.empty()) {
        return false;
    }
    QMessageBox card(QMessageBox::Question, tr("Compress"),
                     tr("Write smaller copies of %1 files and move the originals (%2) to the "
                        "Trash?")
                         .arg(found->plan.items.size())
                         .arg(byteText(found->plan.plannedBytes())),
                     QMessageBox::NoButton, this);
    card.setInformativeText(
        tr("A copy that fails a check is removed and its original stays. Originals can be put "
           "back from the History; their copies then go to the Trash."));
    QPushButton* go = card.addButton(tr("Compress"), QMessageBox::AcceptRole);
    card.addButton(QMessageBox::Cancel);
    card.setDefaultButton(go);
    card.exec();
    return card.clickedButton() == go;
}

void CompressionScreen::showRun() {
    pages_->setCurrentWidget(runPage_);
    stop_->setEnabled(true);
    stop_->setText(tr("Stop After This One"));
    bar_->setRange(0, 0);
    stop_->setFocus();
}

void CompressionScreen::showProgress(const CompressionProgress& progress) {
    const auto& found = controller_.candidates();
    if (!found || progress.index >= found->plan.items.size()) {
        return;
    }
    const auto& item = found->plan.items[progress.index];
    QString where =
        tr("File %1 of %2: %3").arg(progress.index + 1).arg(progress.total).arg(nameOf(item.path));
    if (progress.totalFrames > 0) {
        where += tr(", frame %1 of %2").arg(progress.frames).arg(progress.totalFrames);
        bar_->setRange(0, static_cast<int>(progress.totalFrames));
        bar_->setValue(static_cast<int>(progress.frames));
    } else {
        bar_->setRange(0, static_cast<int>(progress.total));
        bar_->setValue(static_cast<int>(progress.index + (progress.done ? 1 : 0)));
    }
    file_->setText(where);
}

void CompressionScreen::showReport() {
    pages_->setCurrentWidget(reportPage_);
    const auto& report = controller_.report();
    if (!report) {
        reportTitle_->setText(tr("Nothing was compressed"));
        report_->setPlainText(controller_.refusal());
    } else {
        reportTitle_->setText(
            qtText(report->reconciled ? texts::kInterruptedTitle : texts::kFinishedTitle));
        report_->setPlainText(reportLines(*report));
    }
    done_->setFocus();
}

} // namespace brevant::gui
