#include "OverviewScreen.hpp"

#include "app/gui/CatalogMarkings.hpp"
#include "app/gui/LeftOutList.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "app/gui/WindowTexts.hpp"

#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <map>

namespace brevant::gui {

namespace {

using Mode = CleanupSettings::Mode;

QString excludedTitle(ExcludedItem::Kind kind) {
    using Kind = ExcludedItem::Kind;
    switch (kind) {
    case Kind::managedLibrary:
        return QStringLiteral("Photo libraries and catalogues, not opened");
    case Kind::package:
        return QStringLiteral("Packages, not opened");
    case Kind::unreadableFolder:
        return QStringLiteral("Folders that could not be opened");
    case Kind::refusedRoot:
        return QStringLiteral("Chosen folders that were not scanned");
    case Kind::overlappingRoot:
        return QStringLiteral("Folders inside another chosen folder");
    }
    return {};
}

QString excludedExplanation(ExcludedItem::Kind kind) {
    using Kind = ExcludedItem::Kind;
    switch (kind) {
    case Kind::managedLibrary:
        return QStringLiteral("Another application manages the files inside, so Brevant never "
                              "opens them.");
    case Kind::package:
        return QStringLiteral("A package is one thing, not a folder of photos.");
    case Kind::unreadableFolder:
        return QStringLiteral("Linux would not open these folders, usually because of their "
                              "permissions. The pictures inside were not compared.");
    case Kind::refusedRoot:
        return QStringLiteral("Each one says why; nothing in them was read.");
    case Kind::overlappingRoot:
        return QStringLiteral("Each was scanned once, as part of the folder that holds it.");
    }
    return {};
}

QString pathLine(const std::string& path, const std::optional<std::string>& detail) {
    if (!detail || detail->empty()) {
        return qtText(path);
    }
    return QStringLiteral("%1 — %2").arg(qtText(path), qtText(*detail));
}

QString modeTitle(Mode mode, SimilarityPreset preset) {
    switch (mode) {
    case Mode::identical:
        return QStringLiteral("Identical copies");
    case Mode::similar:
        return QStringLiteral("Similar versions, %1").arg(qtText(displayName(preset)));
    case Mode::series:
        return QStringLiteral("Series");
    case Mode::livePhotos:
        return QStringLiteral("Live Photos into stills");
    }
    return {};
}

} // namespace

OverviewScreen::OverviewScreen(PhotoCleanupModel& model, QWidget* parent)
    : QWidget(parent)
    , model_(model)
    , scroll_(new QScrollArea(this))
    , headline_(parts::label({}, "title", this))
    , subtitle_(parts::label({}, "muted", this))
    , groups_(parts::label({}, "figure", this))
    , pictures_(parts::label({}, "figure", this))
    , bytes_(parts::label({}, "figure", this))
    , incomplete_(parts::notice(QLatin1String(texts::kIncompleteNotice), this))
    , untested_(parts::notice({}, this))
    , alreadyMarked_(parts::label({}, "muted", this))
    , kindsCard_(parts::card(this))
    , kindRows_(new QVBoxLayout)
    , presetRow_(new QWidget(this))
    , preset_(new QComboBox(this))
    , presetExplanation_(parts::label({}, "muted", this))
    , leftOutCard_(parts::card(this))
    , leftOut_(new LeftOutList(this))
    , newScan_(new QPushButton(tr("New Scan"), this))
    , review_(parts::accentButton(tr("Review Groups…"), this)) {
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(32, 24, 32, 16);
    column->setSpacing(12);
    column->addWidget(headline_);
    column->addWidget(subtitle_);
    column->addWidget(parts::titleRule(content));
    // Said first: it decides what can be done with what follows.
    column->addWidget(untested_);

    auto* figures = new QHBoxLayout;
    figures->setSpacing(40);
    const std::pair<QLabel*, QString> captions[] = {
        {groups_, tr("groups")},
        {pictures_, tr("pictures in them")},
        {bytes_, tr("can be freed")},
    };
    for (const auto& [value, caption] : captions) {
        auto* pair = new QVBoxLayout;
        pair->setSpacing(0);
        pair->addWidget(value);
        pair->addWidget(parts::label(caption, "muted", content));
        figures->addLayout(pair);
    }
    figures->addStretch();
    column->addLayout(figures);
    column->addWidget(alreadyMarked_);
    column->addWidget(incomplete_);

    auto* kindsLayout = static_cast<QVBoxLayout*>(kindsCard_->layout());
    kindsLayout->addWidget(parts::label(tr("Groups by kind"), "section", kindsCard_));
    kindsLayout->addLayout(kindRows_);
    auto* presetLayout = new QHBoxLayout(presetRow_);
    presetLayout->setContentsMargins(0, 6, 0, 0);
    presetLayout->addWidget(new QLabel(tr("Similarity:"), presetRow_));
    for (SimilarityPreset preset : EnumCases<SimilarityPreset>::kAll) {
        preset_->addItem(qtText(displayName(preset)), static_cast<int>(preset));
    }
    presetLayout->addWidget(preset_);
    presetLayout->addWidget(presetExplanation_, 1);
    presetExplanation_->setWordWrap(true);
    kindsLayout->addWidget(presetRow_);
    column->addWidget(kindsCard_);

    auto* leftOutLayout = static_cast<QVBoxLayout*>(leftOutCard_->layout());
    leftOutLayout->addWidget(
        parts::label(tr("Skipped files and folders left out"), "section", leftOutCard_));
    leftOut_->setObjectName(QStringLiteral("leftOut"));
    leftOutLayout->addWidget(leftOut_);
    column->addWidget(leftOutCard_);
    column->addStretch(1);

    scroll_->setWidget(content);
    scroll_->setWidgetResizable(true);
    scroll_->setFrameShape(QFrame::NoFrame);

    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(32, 8, 32, 20);
    buttons->addWidget(newScan_);
    buttons->addStretch();
    buttons->addWidget(review_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(scroll_, 1);
    layout->addLayout(buttons);

    review_->setEnabled(false);
    review_->setToolTip(tr("Go through the groups and mark the copies to remove."));
    connect(review_, &QPushButton::clicked, this, &OverviewScreen::reviewRequested);
    connect(newScan_, &QPushButton::clicked, &model_, &PhotoCleanupModel::returnHome);
    connect(preset_, &QComboBox::activated, this, [this](int index) {
        model_.setPreset(static_cast<SimilarityPreset>(preset_->itemData(index).toInt()));
    });
    connect(&model_, &PhotoCleanupModel::resultChanged, this, &OverviewScreen::showResult);
    connect(&model_, &PhotoCleanupModel::settingsChanged, this,
            [this] { preset_->setCurrentIndex(static_cast<int>(model_.settings().preset)); });
    showResult();
}

void OverviewScreen::setReviewAvailable(bool available) {
    reviewAvailable_ = available;
    review_->setEnabled(available && !model_.groups().empty());
}

void OverviewScreen::showResult() {
    const ScanResult& result = model_.result();
    QLocale locale;
    bool none = model_.groups().empty();
    // Groups emptied by a cleanup were found; they are done, not missing.
    bool cleaned = none && model_.copiesAway() > 0;
    headline_->setText(cleaned ? QLatin1String(texts::kAllCleaned)
                       : none  ? QLatin1String(texts::kNothingFound)
                               : tr("Overview"));
    // The whole scan: finding the identical copies, measuring and grouping.
    double seconds = std::max(0.0, result.finished.secondsSinceReferenceDate -
                                       result.started.secondsSinceReferenceDate);
    auto milliseconds =
        std::max(static_cast<std::int64_t>(seconds * 1000), model_.scanMilliseconds());
    subtitle_->setText(
        tr("%1 · %2 in %3 examined in %4")
            .arg(modeTitle(model_.resultMode(), model_.groupedPreset()),
                 countText(result.examined, "picture", "pictures"),
                 countText(static_cast<std::int64_t>(result.roots.size()), "folder", "folders"),
                 spanText(milliseconds)));
    groups_->setText(locale.toString(static_cast<qlonglong>(model_.groups().size())));
    pictures_->setText(locale.toString(model_.picturesInGroups()));
    bytes_->setText(byteText(model_.bytesToFree()));
    incomplete_->setVisible(model_.hasResult() && result.isIncomplete());
    presetRow_->setVisible(model_.resultMode() == Mode::similar);
    preset_->setCurrentIndex(static_cast<int>(model_.groupedPreset()));
    presetExplanation_->setText(qtText(explanation(model_.groupedPreset())));
    review_->setEnabled(reviewAvailable_ && !none);
    showCatalogFacts();
    fillKinds();
    fillLeftOut();
}

void OverviewScreen::showCatalogFacts() {
    CatalogSource::Facts facts = model_.catalogFacts().value_or(CatalogSource::Facts{});
    QString notice = catalog_texts::untestedNotice(facts);
    parts::noticeLabel(untested_)->setText(notice);
    untested_->setVisible(!notice.isEmpty());
    QString marked = catalog_texts::alreadyMarkedLine(facts);
    QStringList paths;
    for (const auto& path : facts.alreadyMarked) {
        paths.push_back(qtText(path));
    }
    alreadyMarked_->setText(marked);
    alreadyMarked_->setToolTip(paths.join(QLatin1Char('\n')));
    alreadyMarked_->setVisible(!marked.isEmpty());
}

void OverviewScreen::fillKinds() {
    while (QLayoutItem* item = kindRows_->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    kindLines_.clear();
    auto kinds = model_.kinds();
    if (kinds.empty()) {
        int away = model_.copiesAway();
        QString detail = away > 0 ? tr("%1 moved to the Trash; no group is left to review.")
                                        .arg(countText(away, "copy was", "copies were"))
                                  : QLatin1String(texts::kNothingFoundDetail);
        kindRows_->addWidget(parts::label(detail, "muted", kindsCard_));
        return;
    }
    for (const auto& kind : kinds) {
        auto* row = new QWidget(kindsCard_);
        auto* layout = new QHBoxLayout(row);
        layout->setContentsMargins(0, 2, 0, 2);
        layout->addWidget(new QLabel(kindTitle(kind.kind), row), 1);
        QLabel* line = parts::label(tr("%1 · %2 · %3 to free")
                                        .arg(countText(kind.groups, "group", "groups"),
                                             countText(kind.pictures, "picture", "pictures"),
                                             byteText(kind.bytesToFree)),
                                    "muted", row);
        line->setWordWrap(false);
        layout->addWidget(line);
        kindRows_->addWidget(row);
        kindLines_[kind.kind] = line;
    }
}

void OverviewScreen::fillLeftOut() {
    const ScanResult& result = model_.result();
    std::vector<LeftOutList::Reason> reasons;
    reasons.reserve(EnumCases<SkipReason>::kAll.size() +
                    EnumCases<ExcludedItem::Kind>::kAll.size());
    std::map<SkipReason, int> skipped;
    for (const auto& file : result.skipped) {
        ++skipped[file.reason];
    }
    for (const auto& [reason, count] : skipped) {
        reasons.push_back(
            {qtText(title(reason)), qtText(explanation(reason)), count, [this, reason] {
                 QStringList lines;
                 for (const auto& file : model_.result().skipped) {
                     if (file.reason == reason) {
                         lines.push_back(pathLine(file.path, file.detail));
                     }
                 }
                 return lines;
             }});
    }
    std::map<ExcludedItem::Kind, int> excluded;
    for (const auto& folder : result.excluded) {
        ++excluded[folder.kind];
    }
    for (const auto& [kind, count] : excluded) {
        reasons.push_back({excludedTitle(kind), excludedExplanation(kind), count, [this, kind] {
                               QStringList lines;
                               for (const auto& folder : model_.result().excluded) {
                                   if (folder.kind == kind) {
                                       lines.push_back(pathLine(folder.path, folder.detail));
                                   }
                               }
                               return lines;
                           }});
    }
    leftOutCard_->setVisible(!reasons.empty());
    leftOut_->setReasons(std::move(reasons));
}

void OverviewScreen::showSkipped() {
    if (leftOut_->count() > 0) {
        leftOut_->setOpen(0, true);
    }
    scroll_->ensureWidgetVisible(leftOutCard_);
    leftOut_->setFocus();
}

void OverviewScreen::keyPressEvent(QKeyEvent* event) {
    bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    QWidget* focus = QApplication::focusWidget();
    bool inLeftOut = focus != nullptr && leftOut_->isAncestorOf(focus);
    if (enter && inLeftOut && review_->isEnabled()) {
        Q_EMIT reviewRequested();
        return;
    }
    QWidget::keyPressEvent(event);
}

void OverviewScreen::focusNextStep() {
    if (review_->isEnabled()) {
        review_->setFocus();
        return;
    }
    newScan_->setFocus();
}

QString OverviewScreen::headline() const {
    return headline_->text();
}

QString OverviewScreen::groupsFigure() const {
    return groups_->text();
}

QString OverviewScreen::bytesFigure() const {
    return bytes_->text();
}

QString OverviewScreen::kindLine(MatchKind kind) const {
    auto found = kindLines_.find(kind);
    return found == kindLines_.end() ? QString() : found->second->text();
}

bool OverviewScreen::showsIncompleteNotice() const {
    return !incomplete_->isHidden();
}

QString OverviewScreen::catalogNotice() const {
    return untested_->isHidden() ? QString() : parts::noticeLabel(untested_)->text();
}

QString OverviewScreen::alreadyMarkedLine() const {
    return alreadyMarked_->isHidden() ? QString() : alreadyMarked_->text();
}

QString OverviewScreen::kindTitle(MatchKind kind) {
    switch (kind) {
    case MatchKind::identical:
        return QStringLiteral("Identical copies");
    case MatchKind::similar:
        return QStringLiteral("Similar versions");
    case MatchKind::series:
        return QStringLiteral("Series");
    case MatchKind::liveMovie:
        return QStringLiteral("Live Photo movies");
    }
    return {};
}

} // namespace brevant::gui
