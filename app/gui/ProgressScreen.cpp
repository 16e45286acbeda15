#include "ProgressScreen.hpp"

#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "app/gui/WindowTexts.hpp"

#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace brevant::gui {

namespace {

constexpr int kTickMs = 500;
constexpr int kColumnWidth = 440;

QLabel* figure(QWidget* parent, const QString& name) {
    QLabel* label = parts::label(QStringLiteral("0"), "figure", parent);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

ProgressScreen::ProgressScreen(PhotoCleanupModel& model, QWidget* parent)
    : QWidget(parent)
    , model_(model)
    , title_(parts::label(tr("Scanning"), "title", this))
    , stage_(parts::label({}, "stage", this))
    , detail_(parts::label({}, "muted", this))
    , bar_(new QProgressBar(this))
    , found_(figure(this, QStringLiteral("Found")))
    , examined_(figure(this, QStringLiteral("Examined")))
    , skipped_(figure(this, QStringLiteral("Skipped")))
    , matched_(figure(this, QStringLiteral("Matched")))
    , elapsed_(parts::label({}, "muted", this))
    , cancel_(new QPushButton(tr("Cancel"), this))
    , clock_(new QTimer(this)) {
    bar_->setTextVisible(false);
    stage_->setWordWrap(true);
    detail_->setWordWrap(true);

    auto* counts = new QGridLayout;
    counts->setHorizontalSpacing(24);
    const std::pair<QLabel*, QString> figures[] = {
        {found_, tr("Found")},
        {examined_, tr("Examined")},
        {skipped_, tr("Skipped")},
        {matched_, tr("Matched")},
    };
    int column = 0;
    for (const auto& [value, name] : figures) {
        QLabel* caption = parts::label(name, "muted", this);
        caption->setAlignment(Qt::AlignCenter);
        counts->addWidget(value, 0, column);
        counts->addWidget(caption, 1, column);
        ++column;
    }

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(elapsed_);
    buttons->addStretch();
    buttons->addWidget(cancel_);

    auto* inner = new QWidget(this);
    inner->setMaximumWidth(kColumnWidth + 120);
    inner->setMinimumWidth(kColumnWidth);
    auto* stack = new QVBoxLayout(inner);
    stack->setSpacing(12);
    stack->addWidget(title_);
    stack->addWidget(parts::titleRule(inner));
    stack->addSpacing(8);
    stack->addWidget(stage_);
    stack->addWidget(bar_);
    stack->addWidget(detail_);
    stack->addSpacing(12);
    stack->addLayout(counts);
    stack->addSpacing(20);
    stack->addLayout(buttons);

    auto* layout = new QVBoxLayout(this);
    layout->addStretch(2);
    layout->addWidget(inner, 0, Qt::AlignHCenter);
    layout->addStretch(3);

    cancel_->setShortcut(QKeySequence(Qt::Key_Escape));
    cancel_->setToolTip(tr("Stop the scan (Esc). Nothing has been changed."));
    connect(cancel_, &QPushButton::clicked, &model_, &PhotoCleanupModel::cancelScan);
    connect(&model_, &PhotoCleanupModel::progressChanged, this, &ProgressScreen::display);
    connect(clock_, &QTimer::timeout, this, &ProgressScreen::tick);
    clock_->setInterval(kTickMs);
    display(model_.progress());
}

void ProgressScreen::display(const ModelProgress& progress) {
    const ScanProgress& scan = progress.scan;
    QLocale locale;
    found_->setText(locale.toString(scan.discovered));
    examined_->setText(locale.toString(scan.examined));
    skipped_->setText(locale.toString(scan.skipped));
    matched_->setText(locale.toString(scan.matched));
    if (model_.isCancelling()) {
        title_->setText(QLatin1String(texts::kCancelling));
        stage_->setText(qtText(rawValue(scan.stage)));
        detail_->setText(QLatin1String(texts::kCancellingDetail));
        cancel_->setEnabled(false);
        return;
    }
    title_->setText(tr("Scanning"));
    cancel_->setEnabled(true);
    stage_->setText(qtText(rawValue(scan.stage)));
    if (progress.total && *progress.total > 0) {
        bar_->setRange(0, *progress.total);
        bar_->setValue(progress.done);
        detail_->setText(
            tr("%1 of %2 pictures")
                .arg(locale.toString(progress.done), locale.toString(*progress.total)));
    } else {
        // A busy bar: the total of this stage is not known ahead.
        bar_->setRange(0, 0);
        detail_->clear();
    }
    tick();
}

void ProgressScreen::tick() {
    elapsed_->setText(tr("Elapsed %1").arg(durationText(model_.elapsedMilliseconds())));
}

QString ProgressScreen::stageText() const {
    return stage_->text();
}

QString ProgressScreen::countText(const QString& name) const {
    auto* value = findChild<QLabel*>(name);
    return value != nullptr ? value->text() : QString();
}

QString ProgressScreen::elapsedText() const {
    return elapsed_->text();
}

void ProgressScreen::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    display(model_.progress());
    clock_->start();
}

void ProgressScreen::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    clock_->stop();
}

} // namespace brevant::gui
