#include "CompareView.hpp"

#include "app/gui/DetailLoader.hpp"
#include "app/gui/ElidedLabel.hpp"
#include "app/gui/MemberTile.hpp"
#include "app/gui/PictureView.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ReviewTexts.hpp"
#include "app/gui/SceneZoom.hpp"
#include "app/gui/ScreenParts.hpp"
#include "app/gui/ThumbnailLoader.hpp"
#include "engine/review/CopyLabels.hpp"

#include <QDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace brevant::gui {

namespace {

constexpr double kLargeShare = 0.85;

// What a tile needs beside its picture (badge, name, folder, facts,
// buttons), and the proportions of a typical photo.
constexpr int kTileChrome = 150;
constexpr double kPhotoAspect = 1.5;
constexpr int kSpacing = 10;
// Up to this many copies, each tile has the room for the keeper's reason.
constexpr int kRoomyTiles = 3;

// What the tallest tile needs beside its picture at this width, never less
// than kTileChrome: its words wrap, so a narrower tile needs more lines.
int tileChrome(const std::vector<MemberTile*>& tiles, int width) {
    int chrome = kTileChrome;
    for (const MemberTile* tile : tiles) {
        int whole =
            tile->hasHeightForWidth() ? tile->heightForWidth(width) : tile->sizeHint().height();
        chrome = std::max(chrome, whole - tile->view()->sizeHint().height());
    }
    return chrome;
}

// How many tiles to a row so that each picture is as large as it can be in
// `area`: two copies side by side, five as three and two.
int columnsFor(const std::vector<MemberTile*>& tiles, QSize area) {
    int count = static_cast<int>(tiles.size());
    // Not laid out yet: one row, as before the window shows.
    if (area.height() <= kTileChrome || area.width() <= 0) {
        return std::max(count, 1);
    }
    int best = 1;
    double bestWidth = 0;
    for (int columns = 1; columns <= count; ++columns) {
        int rows = (count + columns - 1) / columns;
        double cellWidth = (area.width() - (columns - 1) * kSpacing) / double(columns);
        int chrome = tileChrome(tiles, static_cast<int>(cellWidth));
        double cellHeight = (area.height() - (rows - 1) * kSpacing) / double(rows) - chrome;
        double pictureWidth = std::min(cellWidth, cellHeight * kPhotoAspect);
        if (pictureWidth > bestWidth + 1) {
            best = columns;
            bestWidth = pictureWidth;
        }
    }
    return best;
}

// The tiles' grid. Their wrapped words would have the scroll area size it
// by preferred heights, scrolling where the pictures could simply be
// smaller; only the tiles' minimum heights decide when to scroll.
class TileGrid : public QGridLayout {
public:
    using QGridLayout::QGridLayout;

    [[nodiscard]] bool hasHeightForWidth() const override { return false; }
};

QString stateText(const MemberFacts& facts) {
    if (facts.isLocked) {
        return QLatin1String(texts::kLockedBadge);
    }
    if (facts.isMarked) {
        return QLatin1String(texts::kMarkedBadge);
    }
    if (facts.isKeeper) {
        return QLatin1String(texts::kKeeperBadge);
    }
    return {};
}

} // namespace

CompareView::CompareView(ThumbnailLoader& thumbnails, QWidget* parent)
    : QWidget(parent)
    , thumbnails_(thumbnails)
    , zoom_(new SceneZoom(this))
    , details_(new DetailLoader(this))
    , zoomText_(parts::label({}, "muted", this))
    , heading_(parts::label({}, "section", this))
    , pages_(new QStackedWidget(this))
    , empty_(parts::label(QLatin1String(texts::kNoGroup), "muted", this))
    , scroll_(new QScrollArea(this))
    , row_(new QWidget)
    , rowLayout_(new TileGrid(row_))
    , flipPage_(new QWidget(this))
    , flipCaption_(new ElidedLabel({}, flipPage_))
    , flipView_(new PictureView(zoom_, flipPage_))
    , flipButton_(new QPushButton(tr("A/B Flip"), this))
    , sideBySideButton_(new QPushButton(QLatin1String(texts::kSideBySide), this)) {
    auto* zoomOut = new QPushButton(QStringLiteral("−"), this);
    auto* zoomIn = new QPushButton(QStringLiteral("+"), this);
    auto* fit = new QPushButton(QLatin1String(texts::kFit), this);
    auto* actual = new QPushButton(QStringLiteral("100 %"), this);
    actual->setObjectName(QStringLiteral("actualPixels"));
    actual->setToolTip(tr("Show the file's own pixels, one to one"));
    zoomText_->setObjectName(QStringLiteral("zoomText"));
    zoomText_->setToolTip(tr("Zoom: screen pixels per pixel of the file"));
    zoomText_->setMinimumWidth(
        zoomText_->fontMetrics().horizontalAdvance(QStringLiteral("3200 %")));
    zoomText_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    zoomOut->setToolTip(QLatin1String(texts::kZoomOut));
    zoomIn->setToolTip(QLatin1String(texts::kZoomIn));
    flipButton_->setToolTip(QLatin1String(texts::kFlip));
    for (QPushButton* button : {zoomOut, zoomIn, fit, actual, flipButton_, sideBySideButton_}) {
        button->setFocusPolicy(Qt::NoFocus);
    }
    auto* bar = new QHBoxLayout;
    bar->addWidget(heading_, 1);
    bar->addWidget(zoomText_);
    bar->addWidget(zoomOut);
    bar->addWidget(zoomIn);
    bar->addWidget(fit);
    bar->addWidget(actual);
    bar->addSpacing(12);
    bar->addWidget(flipButton_);
    bar->addWidget(sideBySideButton_);

    empty_->setAlignment(Qt::AlignCenter);
    rowLayout_->setContentsMargins(0, 0, 0, 0);
    rowLayout_->setSpacing(kSpacing);
    scroll_->setWidget(row_);
    scroll_->setWidgetResizable(true);
    scroll_->setFrameShape(QFrame::NoFrame);
    auto* flipColumn = new QVBoxLayout(flipPage_);
    flipColumn->setContentsMargins(0, 0, 0, 0);
    flipCaption_->setProperty("role", "section");
    flipColumn->addWidget(flipCaption_);
    flipColumn->addWidget(flipView_, 1);
    pages_->addWidget(empty_);
    pages_->addWidget(scroll_);
    pages_->addWidget(flipPage_);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(bar);
    column->addWidget(pages_, 1);

    connect(zoomOut, &QPushButton::clicked, zoom_, &SceneZoom::zoomOut);
    connect(zoomIn, &QPushButton::clicked, zoom_, &SceneZoom::zoomIn);
    connect(fit, &QPushButton::clicked, zoom_, &SceneZoom::fit);
    connect(actual, &QPushButton::clicked, this, &CompareView::actualPixels);
    connect(zoom_, &SceneZoom::changed, this, &CompareView::updateZoomText);
    connect(flipView_, &PictureView::scaleChanged, this, &CompareView::updateZoomText);
    connect(flipButton_, &QPushButton::clicked, this, &CompareView::flip);
    connect(sideBySideButton_, &QPushButton::clicked, this, &CompareView::sideBySide);
    connect(flipView_, &PictureView::doubleClicked, this, [this] { enlarge(flipShown()); });
    connect(&thumbnails_, &ThumbnailLoader::loaded, this, &CompareView::imageArrived);
    showGroup(std::nullopt);
}

void CompareView::clearTiles() {
    // Later, since a tile's own signal may have led here.
    for (MemberTile* tile : tiles_) {
        rowLayout_->removeWidget(tile);
        tile->hide();
        tile->deleteLater();
    }
    tiles_.clear();
    facts_.clear();
    columns_ = 0;
    current_ = -1;
}

void CompareView::showGroup(const std::optional<DuplicateGroup>& group) {
    clearTiles();
    hasGroup_ = group.has_value();
    group_ = group.value_or(DuplicateGroup{});
    zoom_->fit();
    flipA_ = flipB_ = -1;
    if (large_ != nullptr) {
        large_->hide();
    }
    bool any = !group_.members.empty();
    heading_->setText(any ? tr("%1 copies").arg(group_.members.size()) : QString());
    sideBySideButton_->setEnabled(false);
    flipButton_->setEnabled(any && group_.members.size() > 1);
    pages_->setCurrentWidget(any ? static_cast<QWidget*>(scroll_) : empty_);
    if (!any) {
        return;
    }
    for (int i = 0; i < static_cast<int>(group_.members.size()); ++i) {
        auto* tile = new MemberTile(group_.members[i], zoom_, row_);
        tile->view()->setDetailSource(details_, group_.members[i].path);
        connect(tile->view(), &PictureView::scaleChanged, this, &CompareView::updateZoomText);
        rowLayout_->addWidget(tile, 0, i);
        tiles_.push_back(tile);
        connect(tile, &MemberTile::chosen, this, [this, i] { setCurrent(i); });
        connect(tile, &MemberTile::markClicked, this, [this, i] { Q_EMIT markClicked(i); });
        connect(tile, &MemberTile::lockClicked, this, [this, i] { Q_EMIT lockClicked(i); });
        connect(tile, &MemberTile::enlarge, this, [this, i] { enlarge(i); });
        connect(tile, &MemberTile::menuRequested, this,
                [this, i](const QPoint& global) { Q_EMIT menuRequested(i, global); });
        updateImage(i);
    }
    arrangeTiles();
    setCurrent(0);
}

void CompareView::setFacts(const std::vector<MemberFacts>& facts) {
    facts_ = facts;
    for (int i = 0; i < count() && i < static_cast<int>(facts.size()); ++i) {
        // Past three copies the tiles share rows: the keeper's reason moves
        // to the tile's tooltip (the inspector says it too), so the picture
        // keeps the room.
        MemberFacts shown = facts[i];
        bool crowded = count() > kRoomyTiles;
        tiles_[i]->setToolTip(crowded ? shown.keeperReason : QString());
        if (crowded) {
            shown.keeperReason.clear();
        }
        tiles_[i]->setFacts(shown);
    }
    // The keeper's reason takes lines of its tile.
    arrangeTiles();
    if (isFlipping()) {
        showFlip();
    }
}

const PhotoAsset* CompareView::currentAsset() const {
    return current_ >= 0 && current_ < count() ? &group_.members[current_] : nullptr;
}

MemberTile* CompareView::tile(int member) const {
    return member >= 0 && member < count() ? tiles_[member] : nullptr;
}

void CompareView::setCurrent(int member) {
    if (member < 0 || member >= count()) {
        return;
    }
    bool changed = member != current_;
    if (changed) {
        // A refusal speaks of the copy it was about; moving on ends it.
        clearRefusals();
    }
    current_ = member;
    for (int i = 0; i < count(); ++i) {
        tiles_[i]->setSelected(i == current_);
    }
    scroll_->ensureWidgetVisible(tiles_[current_]);
    updateZoomText();
    if (changed) {
        Q_EMIT currentChanged(current_);
    }
}

void CompareView::nextMember() {
    if (count() > 0) {
        setCurrent((current_ + 1) % count());
    }
}

void CompareView::previousMember() {
    if (count() > 0) {
        setCurrent((current_ + count() - 1) % count());
    }
}

void CompareView::setRefusal(int member, const QString& text) {
    if (MemberTile* refused = tile(member)) {
        refused->setRefusal(text);
    }
}

void CompareView::clearRefusals() {
    for (MemberTile* tile : tiles_) {
        tile->setRefusal({});
    }
}

int CompareView::keeper() const {
    for (int i = 0; i < static_cast<int>(facts_.size()); ++i) {
        if (facts_[i].isKeeper) {
            return i;
        }
    }
    return -1;
}

void CompareView::flip() {
    if (count() < 2) {
        return;
    }
    if (!isFlipping()) {
        flipA_ = current_;
        int other = keeper();
        flipB_ = other >= 0 && other != flipA_ ? other : (flipA_ + 1) % count();
        showingB_ = false;
    } else {
        showingB_ = !showingB_;
    }
    showFlip();
}

void CompareView::showFlip() {
    int shown = flipShown();
    const PhotoAsset& asset = group_.members[shown];
    // Which copy this is: its folder and its state, since the names of
    // copies are often the same.
    QStringList caption{showingB_ ? QStringLiteral("B") : QStringLiteral("A"), qtText(asset.name()),
                        qtText(CopyLabels::folderInRoot(asset))};
    if (shown < static_cast<int>(facts_.size())) {
        if (QString state = stateText(facts_[shown]); !state.isEmpty()) {
            caption << state;
        }
        if (!facts_[shown].orientation.isEmpty()) {
            caption << facts_[shown].orientation;
        }
    }
    flipCaption_->setFullText(tr("%1 — press F to flip").arg(caption.join(QStringLiteral(" · "))));
    flipCaption_->setToolTip(qtText(asset.path));
    // The copy shown is the one the inspector describes and the keys act on.
    setCurrent(shown);
    if (asset.pixelWidth && asset.pixelHeight) {
        flipView_->setScenePixels(QSizeF(*asset.pixelWidth, *asset.pixelHeight));
    }
    QImage image = thumbnails_.thumbnail(asset);
    flipView_->setDetailSource(details_, asset.path);
    flipView_->setImage(image, thumbnails_.failed(asset) ? QLatin1String(texts::kNoPreview)
                                                         : tr("Loading…"));
    if (!asset.pixelWidth || !asset.pixelHeight) {
        flipView_->setScenePixels(QSizeF(image.size()));
    }
    pages_->setCurrentWidget(flipPage_);
    sideBySideButton_->setEnabled(true);
    updateZoomText();
}

void CompareView::sideBySide() {
    flipA_ = flipB_ = -1;
    sideBySideButton_->setEnabled(false);
    if (count() > 0) {
        pages_->setCurrentWidget(scroll_);
    }
    updateZoomText();
}

bool CompareView::isFlipping() const {
    return flipA_ >= 0 && pages_->currentWidget() == flipPage_;
}

int CompareView::flipShown() const {
    if (flipA_ < 0) {
        return -1;
    }
    return showingB_ ? flipB_ : flipA_;
}

void CompareView::enlarge(int member) {
    if (member < 0 || member >= count()) {
        return;
    }
    if (large_ == nullptr) {
        large_ = new QDialog(this);
        large_->setModal(false);
        largeCaption_ = parts::label({}, "section", large_);
        largePicture_ = new PictureView(zoom_, large_);
        auto* column = new QVBoxLayout(large_);
        column->addWidget(largeCaption_);
        column->addWidget(largePicture_, 1);
        connect(largePicture_, &PictureView::doubleClicked, large_, &QDialog::hide);
    }
    largeMember_ = member;
    const PhotoAsset& asset = group_.members[member];
    large_->setWindowTitle(qtText(asset.name()));
    largeCaption_->setText(qtText(asset.path));
    if (asset.pixelWidth && asset.pixelHeight) {
        largePicture_->setScenePixels(QSizeF(*asset.pixelWidth, *asset.pixelHeight));
    }
    largePicture_->setDetailSource(details_, asset.path);
    largePicture_->setImage(thumbnails_.thumbnail(asset), tr("Loading…"));
    QWidget* top = window();
    large_->resize((top->size() * kLargeShare).expandedTo(QSize(480, 360)));
    large_->show();
    large_->raise();
}

void CompareView::imageArrived(const QString& path) {
    for (int i = 0; i < count(); ++i) {
        if (qtText(group_.members[i].path) == path) {
            updateImage(i);
        }
    }
    if (isFlipping() && qtText(group_.members[flipShown()].path) == path) {
        showFlip();
    }
    if (large_ != nullptr && large_->isVisible() && largeMember_ >= 0 && largeMember_ < count() &&
        qtText(group_.members[largeMember_].path) == path) {
        largePicture_->setImage(thumbnails_.thumbnail(group_.members[largeMember_]), {});
    }
}

void CompareView::arrangeTiles() {
    int columns = columnsFor(tiles_, scroll_->viewport()->size());
    if (columns == columns_) {
        return;
    }
    columns_ = columns;
    for (int i = 0; i < count(); ++i) {
        rowLayout_->removeWidget(tiles_[i]);
    }
    for (int column = 0; column < rowLayout_->columnCount(); ++column) {
        rowLayout_->setColumnStretch(column, 0);
    }
    for (int i = 0; i < count(); ++i) {
        rowLayout_->addWidget(tiles_[i], i / columns, i % columns);
    }
    for (int column = 0; column < columns; ++column) {
        rowLayout_->setColumnStretch(column, 1);
    }
}

void CompareView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    // The viewport follows once the layout has run.
    QMetaObject::invokeMethod(this, &CompareView::arrangeTiles, Qt::QueuedConnection);
}

PictureView* CompareView::shownView() const {
    if (isFlipping()) {
        return flipView_;
    }
    MemberTile* shown = tile(current_);
    return shown != nullptr ? shown->view() : nullptr;
}

void CompareView::actualPixels() {
    if (PictureView* view = shownView()) {
        zoom_->zoomTo(view->actualPixelsFactor());
    }
}

QString CompareView::flipCaption() const {
    return flipCaption_->fullText();
}

QString CompareView::zoomText() const {
    return zoomText_->text();
}

void CompareView::updateZoomText() {
    PictureView* view = shownView();
    double percent = view != nullptr ? view->zoomPercent() : 0.0;
    zoomText_->setText(percent > 0 ? QStringLiteral("%1 %").arg(std::lround(percent)) : QString());
}

void CompareView::updateImage(int member) {
    const PhotoAsset& asset = group_.members[member];
    tiles_[member]->setImage(thumbnails_.thumbnail(asset), thumbnails_.failed(asset));
}

} // namespace brevant::gui
