#include "CleanupScreen.hpp"

#include "app/gui/CleanupController.hpp"
#include "app/gui/CleanupReportView.hpp"
#include "app/gui/CleanupTexts.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "engine/support/PathNames.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace brevant::gui {

namespace {

constexpr int kColumnWidth = 440;

} // namespace

CleanupScreen::CleanupScreen(CleanupController& cleanups, QWidget* parent)
    : QWidget(parent)
    , cleanups_(cleanups)
    , pages_(new QStackedWidget(this))
    , runPage_(new QWidget(pages_))
    , current_(parts::label({}, "stage", runPage_))
    , bar_(new QProgressBar(runPage_))
    , detail_(parts::label({}, "muted", runPage_))
    , stop_(new QPushButton(tr("Stop After This One"), runPage_))
    , reportPage_(new QWidget(pages_))
    , report_(new CleanupReportView(cleanups, reportPage_))
    , refusalPage_(new QWidget(pages_))
    , refusal_(parts::notice({}, refusalPage_))
    , done_(parts::accentButton(tr("Done"), this)) {
    bar_->setTextVisible(false);
    detail_->setWordWrap(true);
    current_->setWordWrap(true);
    stop_->setShortcut(QKeySequence(Qt::Key_Escape));
    stop_->setToolTip(
        tr("Let the picture being moved finish, and leave the rest where they are (Esc)"));

    auto* inner = new QWidget(runPage_);
    inner->setMinimumWidth(kColumnWidth);
    inner->setMaximumWidth(kColumnWidth + 120);
    auto* stack = new QVBoxLayout(inner);
    stack->setSpacing(12);
    stack->addWidget(parts::label(tr(cleanup_texts::kRunTitle), "title", inner));
    stack->addWidget(parts::titleRule(inner));
    stack->addSpacing(8);
    stack->addWidget(current_);
    stack->addWidget(bar_);
    stack->addWidget(detail_);
    stack->addSpacing(20);
    auto* stopRow = new QHBoxLayout;
    stopRow->addStretch();
    stopRow->addWidget(stop_);
    stack->addLayout(stopRow);
    auto* runLayout = new QVBoxLayout(runPage_);
    runLayout->addStretch(2);
    runLayout->addWidget(inner, 0, Qt::AlignHCenter);
    runLayout->addStretch(3);

    auto* reportLayout = new QVBoxLayout(reportPage_);
    reportLayout->setContentsMargins(0, 0, 0, 0);
    reportLayout->addWidget(report_);

    auto* refusalLayout = new QVBoxLayout(refusalPage_);
    refusalLayout->setContentsMargins(0, 0, 0, 0);
    refusalLayout->addWidget(parts::label(tr(cleanup_texts::kRefusedTitle), "title", refusalPage_));
    refusalLayout->addWidget(refusal_);
    refusalLayout->addStretch();

    pages_->addWidget(runPage_);
    pages_->addWidget(reportPage_);
    pages_->addWidget(refusalPage_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(done_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 22, 28, 22);
    layout->addWidget(pages_, 1);
    layout->addLayout(buttons);

    connect(stop_, &QPushButton::clicked, &cleanups_, &CleanupController::stopAfterThisOne);
    connect(done_, &QPushButton::clicked, this, &CleanupScreen::next);
    connect(&cleanups_, &CleanupController::runStarted, this, &CleanupScreen::showRun);
    connect(&cleanups_, &CleanupController::runProgress, this, &CleanupScreen::showProgress);
    connect(&cleanups_, &CleanupController::runRefused, this, &CleanupScreen::showRefusal);
    connect(&cleanups_, &CleanupController::runFinished, this,
            [this](const CleanupReport& report) { showReports({report}); });
}

void CleanupScreen::showRun() {
    waiting_.clear();
    pages_->setCurrentWidget(runPage_);
    done_->hide();
    stop_->setEnabled(true);
    stop_->setFocus();
}

void CleanupScreen::showProgress(int handled, int total) {
    bar_->setRange(0, total);
    bar_->setValue(handled);
    std::string path = cleanups_.currentPath();
    current_->setText(path.empty() ? QString() : qtText(PathNames::lastComponent(path)));
    if (cleanups_.isStopping()) {
        detail_->setText(tr(cleanup_texts::kStopping));
        stop_->setEnabled(false);
        return;
    }
    QLocale locale;
    detail_->setText(
        tr("%1 of %2 pictures handled").arg(locale.toString(handled), locale.toString(total)));
}

void CleanupScreen::showRefusal(const QString& message) {
    waiting_.clear();
    parts::noticeLabel(refusal_)->setText(message);
    pages_->setCurrentWidget(refusalPage_);
    done_->show();
    done_->setFocus();
}

void CleanupScreen::showReports(const std::vector<CleanupReport>& reports) {
    waiting_.assign(reports.begin(), reports.end());
    if (waiting_.empty()) {
        return;
    }
    report_->setReport(waiting_.front());
    waiting_.pop_front();
    pages_->setCurrentWidget(reportPage_);
    done_->show();
    done_->setFocus();
}

void CleanupScreen::next() {
    if (waiting_.empty()) {
        Q_EMIT finished();
        return;
    }
    report_->setReport(waiting_.front());
    waiting_.pop_front();
}

bool CleanupScreen::showsRun() const {
    return pages_->currentWidget() == runPage_;
}

bool CleanupScreen::showsReport() const {
    return pages_->currentWidget() == reportPage_;
}

bool CleanupScreen::showsRefusal() const {
    return pages_->currentWidget() == refusalPage_;
}

QString CleanupScreen::runDetail() const {
    return detail_->text();
}

QString CleanupScreen::refusalText() const {
    return parts::noticeLabel(refusal_)->text();
}

} // namespace brevant::gui
