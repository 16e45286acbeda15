#include "CatalogMarkingCard.hpp"

#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/cleanup/ExecutionRefusal.hpp"

#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <filesystem>

namespace brevant::gui {

namespace {

using Scope = CleanupSettings::Scope;

// The file with its folder: copies often share a file name.
QString shortName(const std::string& path) {
    std::filesystem::path file(path);
    std::string folder = file.parent_path().filename().string();
    std::string name = file.filename().string();
    return qtText(folder.empty() ? name : folder + "/" + name);
}

QString keptNames(const PlannedRemoval& removal) {
    QStringList names;
    for (const auto& keeper : removal.keepers) {
        names.push_back(shortName(keeper.path));
    }
    return names.join(QStringLiteral(", "));
}

QString keptPaths(const PlannedRemoval& removal) {
    QStringList paths;
    for (const auto& keeper : removal.keepers) {
        paths.push_back(qtText(keeper.path));
    }
    return paths.join(QLatin1Char('\n'));
}

QString intro(Scope scope) {
    auto refusal = ExecutionRefusal::catalogPhotos(
        applicationOf(scope).value_or(CatalogSource::Application::lightroom));
    return qtText(refusal.message());
}

QString plannedText(Scope scope, std::size_t count) {
    QString photos = countText(static_cast<std::int64_t>(count), "photo", "photos");
    return QStringLiteral("%1 will be %2. No file is moved or deleted.")
        .arg(photos, catalog_texts::planned(scope));
}

QString safetyText(Scope scope) {
    return QStringLiteral("Brevant changes the catalog only while %1 is closed, after a backup "
                          "in the folder “Brevant Backups” beside it. Every marking can be "
                          "undone from View ▸ Markings and Taggings.")
        .arg(catalog_texts::application(scope));
}

QString doneText(Scope scope, std::size_t count) {
    if (count == 0) {
        return QStringLiteral("Nothing was marked, so the catalog was not changed.");
    }
    return catalog_texts::marked(scope, count);
}

} // namespace

// What the worker hands back: a refusal's sentence, or what was marked.
struct CatalogMarkingCard::Outcome {
    std::optional<std::string> refusal;
    std::size_t marked = 0;
    std::vector<SkippedMark> skipped;
    // Empty when nothing was marked (no backup is taken then).
    std::string backup;
};

CatalogMarkingCard::CatalogMarkingCard(PhotoCleanupModel& model, Scope scope, QWidget* parent)
    : QDialog(parent)
    , model_(model)
    , scope_(scope)
    , catalog_(model.catalog(scope))
    , markings_(model.dataFolder())
    , summary_(parts::label({}, nullptr, this))
    , photos_(new QTreeWidget(this))
    , safety_(parts::label(safetyText(scope), "muted", this))
    , notice_(parts::notice({}, this))
    , outcome_(parts::card(this))
    , result_(parts::label({}, nullptr, outcome_))
    , busy_(parts::label(QStringLiteral("Marking the catalog…"), "muted", this))
    , close_(new QPushButton(QStringLiteral("Cancel"), this))
    , confirm_(parts::accentButton(catalog_texts::verb(scope), this))
    , worker_(*this) {
    setWindowTitle(catalog_texts::command(scope));
    setMinimumWidth(620);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->setSpacing(10);
    QString title = catalog_texts::command(scope);
    title.chop(1);
    layout->addWidget(parts::label(title, "title", this));
    layout->addWidget(parts::titleRule(this));
    layout->addWidget(parts::label(intro(scope), "muted", this));
    layout->addWidget(
        parts::label(QStringLiteral("Catalog: %1").arg(qtText(catalog_)), nullptr, this));
    summary_->setWordWrap(true);
    layout->addWidget(summary_);
    photos_->setColumnCount(2);
    photos_->setHeaderLabels({catalog_texts::verb(scope), QStringLiteral("Copy that stays")});
    photos_->setRootIsDecorated(false);
    photos_->header()->setSectionResizeMode(QHeaderView::Stretch);
    layout->addWidget(photos_, 1);
    layout->addWidget(safety_);
    layout->addWidget(notice_);
    result_->setWordWrap(true);
    result_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    outcome_->layout()->addWidget(result_);
    layout->addWidget(outcome_);
    layout->addWidget(busy_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(close_);
    buttons->addWidget(confirm_);
    layout->addLayout(buttons);
    notice_->hide();
    outcome_->hide();
    busy_->hide();

    connect(close_, &QPushButton::clicked, this, &CatalogMarkingCard::reject);
    connect(confirm_, &QPushButton::clicked, this, &CatalogMarkingCard::confirm);
    showPlan();
}

CatalogMarkingCard::~CatalogMarkingCard() = default;

void CatalogMarkingCard::showPlan() {
    std::shared_ptr<const ReviewSession> session = model_.session();
    if (session == nullptr) {
        showNotice(QStringLiteral("Scan the catalog first."));
        setState(State::unplannable);
        return;
    }
    auto plan = CleanupPlanner::plan(*session);
    if (!plan) {
        showNotice(qtText(plan.error().description()));
        setState(State::unplannable);
        return;
    }
    plan_ = std::move(*plan);
    summary_->setText(plannedText(scope_, plan_->removals.size()));
    // Marking would be refused: the user is told, and not offered it.
    if (auto facts = model_.catalogFacts()) {
        showNotice(catalog_texts::untestedNotice(*facts));
        untested_ = facts->untested.has_value();
    }
    for (const auto& removal : plan_->removals) {
        auto* item = new QTreeWidgetItem(photos_, {shortName(removal.path), keptNames(removal)});
        item->setToolTip(0, qtText(removal.path));
        item->setToolTip(1, keptPaths(removal));
    }
    setState(State::ready);
}

int CatalogMarkingCard::plannedCount() const {
    return plan_ ? static_cast<int>(plan_->removals.size()) : 0;
}

QString CatalogMarkingCard::noticeText() const {
    return notice_->isHidden() ? QString() : parts::noticeLabel(notice_)->text();
}

QString CatalogMarkingCard::resultText() const {
    return outcome_->isHidden() ? QString() : result_->text();
}

void CatalogMarkingCard::showNotice(const QString& text) {
    parts::noticeLabel(notice_)->setText(text);
    notice_->setVisible(!text.isEmpty());
}

void CatalogMarkingCard::setState(State state) {
    state_ = state;
    bool canConfirm = state == State::ready || state == State::refused;
    confirm_->setVisible(state != State::marked);
    confirm_->setEnabled(canConfirm && !untested_);
    close_->setEnabled(state != State::marking);
    close_->setText(state == State::marked ? QStringLiteral("Done") : QStringLiteral("Cancel"));
    busy_->setVisible(state == State::marking);
    if (state == State::marked) {
        close_->setDefault(true);
        close_->setFocus();
    }
}

void CatalogMarkingCard::confirm() {
    if (!plan_ || (state_ != State::ready && state_ != State::refused)) {
        return;
    }
    showNotice({});
    setState(State::marking);
    auto work = [scope = scope_, plan = *plan_, catalog = catalog_,
                 markings = markings_](const CancellationFlag&) {
        CleanupApproval approval{plan.id, Date::now()};
        Outcome outcome;
        auto marked = markings.mark(scope, plan, approval, catalog, Date::now());
        if (!marked) {
            outcome.refusal = marked.error();
            return outcome;
        }
        outcome.marked = marked->marked.size();
        outcome.skipped = marked->skipped;
        if (marked->record) {
            outcome.backup = marked->record->backupPath;
        }
        return outcome;
    };
    worker_.run(std::move(work), [this](const Outcome& outcome) { finish(outcome); });
}

void CatalogMarkingCard::finish(const Outcome& outcome) {
    if (outcome.refusal) {
        showNotice(qtText(*outcome.refusal));
        setState(State::refused);
        Q_EMIT markingFinished();
        return;
    }
    QStringList lines{doneText(scope_, outcome.marked)};
    for (const auto& skipped : outcome.skipped) {
        lines.push_back(
            QStringLiteral("Skipped %1: %2").arg(qtText(skipped.name), qtText(skipped.reason)));
    }
    if (!outcome.backup.empty()) {
        lines.push_back(QStringLiteral("Backup: %1").arg(qtText(outcome.backup)));
        lines.push_back(catalog_texts::finishNote(scope_));
    }
    result_->setText(lines.join(QLatin1Char('\n')));
    // What was planned is now what was done.
    summary_->hide();
    safety_->hide();
    outcome_->show();
    setState(State::marked);
    Q_EMIT markingFinished();
}

void CatalogMarkingCard::reject() {
    // A marking under way finishes first; its outcome must be seen.
    if (state_ == State::marking) {
        return;
    }
    QDialog::reject();
}

} // namespace brevant::gui
