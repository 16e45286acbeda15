#include "CleanupCard.hpp"

#include "app/gui/CleanupTexts.hpp"
#include "app/gui/OverviewScreen.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "engine/cleanup/TrashLocation.hpp"
#include "engine/support/PathNames.hpp"
#include "engine/support/Texts.hpp"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <cstdint>
#include <utility>

namespace brevant::gui {

namespace {

constexpr QSize kCardSize(760, 620);

QTreeWidgetItem* copyRow(QTreeWidgetItem* group, const QString& fate, const std::string& path,
                         std::int64_t size) {
    auto* row = new QTreeWidgetItem(group, {fate, qtText(PathNames::lastComponent(path)),
                                            qtText(PathNames::parentFolder(path)), byteText(size)});
    row->setToolTip(1, qtText(path));
    row->setToolTip(2, qtText(PathNames::parentFolder(path)));
    return row;
}

// Removals in plan order, cut where the kept copies change: the removals of
// one group share its kept copies.
std::vector<std::vector<const PlannedRemoval*>> byGroup(const CleanupPlan& plan) {
    std::vector<std::vector<const PlannedRemoval*>> groups;
    for (const auto& removal : plan.removals) {
        if (groups.empty() || groups.back().front()->keepers != removal.keepers ||
            groups.back().front()->matchKind != removal.matchKind) {
            groups.emplace_back();
        }
        groups.back().push_back(&removal);
    }
    return groups;
}

} // namespace

CleanupCard::CleanupCard(std::expected<CleanupPlan, PlanError> plan, QWidget* parent)
    : QDialog(parent)
    , plan_(std::move(plan)) {
    setWindowTitle(tr(cleanup_texts::kCardTitle));
    resize(kCardSize);
    if (plan_) {
        showPlan();
    } else {
        showError();
    }
}

QString CleanupCard::trashPlace(const PlannedRemoval& removal) {
    std::vector<std::string> folders = TrashLocation::candidates(removal.path);
    QString volume =
        removal.volumeName ? qtText(*removal.volumeName) : qtText(texts::kMachineCapitalized);
    // The home Trash, or the volume's own: .Trash/$uid when the volume has
    // one, else .Trash-$uid, which is made on first use.
    std::string files = folders.front();
    if (folders.size() > 1) {
        files = QFileInfo::exists(qtText(folders[1])) ? folders[1] : folders.back();
    }
    return QStringLiteral("%1: %2").arg(volume, qtText(PathNames::parentFolder(files)));
}

void CleanupCard::showPlan() {
    const CleanupPlan& plan = *plan_;
    std::int64_t bytes = 0;
    for (const auto& removal : plan.removals) {
        bytes += removal.snapshot.size;
        QString place = trashPlace(removal);
        if (!trashPlaces_.contains(place)) {
            trashPlaces_.push_back(place);
        }
    }
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(10);
    layout->addWidget(parts::label(tr(cleanup_texts::kCardTitle), "title", this));
    layout->addWidget(parts::label(tr(cleanup_texts::kCardIntro), "muted", this));
    summary_ = parts::label(
        QStringLiteral("%1 · %2").arg(
            countText(static_cast<std::int64_t>(plan.removals.size()), "picture", "pictures"),
            byteText(bytes)),
        "figure", this);
    layout->addWidget(summary_);

    layout->addWidget(parts::label(tr("Where they go"), "section", this));
    for (const QString& place : std::as_const(trashPlaces_)) {
        layout->addWidget(parts::label(place, nullptr, this));
    }

    layout->addWidget(parts::label(tr("What each group keeps"), "section", this));
    groups_ = new QTreeWidget(this);
    groups_->setHeaderLabels({tr("Copy"), tr("Picture"), tr("Folder"), tr("Size")});
    groups_->setRootIsDecorated(false);
    groups_->setItemsExpandable(false);
    // Every row is made before the tree takes them: spanning a row of a tree
    // lays the whole tree out again, which over many groups took minutes.
    QList<QTreeWidgetItem*> rows;
    int number = 0;
    for (const auto& removals : byGroup(plan)) {
        const PlannedRemoval& first = *removals.front();
        MatchKind kind = first.matchKind.value_or(MatchKind::identical);
        std::int64_t groupBytes = 0;
        for (const PlannedRemoval* removal : removals) {
            groupBytes += removal->snapshot.size;
        }
        auto* group = new QTreeWidgetItem(
            {tr("Group %1 · %2 · keeps %3 · moves %4, %5")
                 .arg(++number)
                 .arg(OverviewScreen::kindTitle(kind))
                 .arg(static_cast<qsizetype>(first.keepers.size()))
                 .arg(countText(static_cast<std::int64_t>(removals.size()), "picture", "pictures"),
                      byteText(groupBytes))});
        for (const auto& keeper : first.keepers) {
            copyRow(group, tr("Stays"), keeper.path, keeper.snapshot.size);
        }
        for (const PlannedRemoval* removal : removals) {
            copyRow(group, tr("Goes to Trash"), removal->path, removal->snapshot.size);
        }
        rows.push_back(group);
    }
    groups_->addTopLevelItems(rows);
    groups_->expandAll();
    for (QTreeWidgetItem* group : std::as_const(rows)) {
        group->setFirstColumnSpanned(true);
    }
    groups_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    layout->addWidget(groups_, 1);

    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(QDialogButtonBox::Cancel);
    confirm_ = parts::accentButton(tr("Move to Trash"), this);
    buttons->addButton(confirm_, QDialogButtonBox::AcceptRole);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        Q_EMIT approved(CleanupApproval{.planID = plan_->id, .approvedAt = Date::now()});
        accept();
    });
    confirm_->setFocus();
}

void CleanupCard::showError() {
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(10);
    layout->addWidget(parts::label(tr(cleanup_texts::kCardTitle), "title", this));
    layout->addWidget(parts::label(tr(cleanup_texts::kCannotPlan), nullptr, this));
    QFrame* notice = parts::notice(qtText(plan_.error().description()), this);
    error_ = parts::noticeLabel(notice);
    layout->addWidget(notice);
    layout->addStretch();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resize(kCardSize.width(), 240);
}

QString CleanupCard::summary() const {
    return summary_ != nullptr ? summary_->text() : QString();
}

QString CleanupCard::errorText() const {
    return error_ != nullptr ? error_->text() : QString();
}

} // namespace brevant::gui
