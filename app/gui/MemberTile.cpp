#include "MemberTile.hpp"

#include "app/gui/ElidedLabel.hpp"
#include "app/gui/PictureView.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ReviewTexts.hpp"
#include "app/gui/ScreenParts.hpp"
#include "engine/platform/LocaleDate.hpp"
#include "engine/review/CopyLabels.hpp"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace brevant::gui {

namespace {

QString pixelText(const PhotoAsset& asset) {
    if (!asset.pixelWidth || !asset.pixelHeight) {
        return {};
    }
    return QStringLiteral("%1 × %2").arg(*asset.pixelWidth).arg(*asset.pixelHeight);
}

} // namespace

MemberTile::MemberTile(const PhotoAsset& asset, SceneZoom* zoom, QWidget* parent)
    : QFrame(parent)
    , asset_(asset)
    , view_(new PictureView(zoom, this))
    , badge_(parts::label({}, "section", this))
    , reason_(parts::label({}, "muted", this))
    , refusal_(parts::notice({}, this))
    , name_(new ElidedLabel(qtText(asset.name()), this))
    , folder_(new ElidedLabel(qtText(CopyLabels::folderInRoot(asset)), this))
    , facts_(parts::label({}, "muted", this))
    , quality_(parts::label({}, "muted", this))
    , mark_(new QPushButton(this))
    , lock_(new QPushButton(this)) {
    setProperty("role", "card");
    setObjectName(QStringLiteral("memberTile"));
    setFrameShape(QFrame::StyledPanel);
    setMinimumWidth(150);
    if (asset.pixelWidth && asset.pixelHeight) {
        view_->setScenePixels(QSizeF(*asset.pixelWidth, *asset.pixelHeight));
    }
    view_->setImage({}, tr("Loading…"));
    refusal_->setObjectName(QStringLiteral("refusal"));
    refusal_->hide();
    // Long names and folders lose their middle rather than widening the
    // tile; the tooltip and the inspector show the whole path.
    folder_->setProperty("role", "muted");
    name_->setToolTip(qtText(asset.path));
    folder_->setToolTip(qtText(asset.path));
    badge_->setWordWrap(true);
    reason_->setWordWrap(true);
    QStringList line;
    line << byteText(asset.size());
    if (QString pixels = pixelText(asset); !pixels.isEmpty()) {
        line << pixels;
    }
    line << qtText(platform::shortDateTime(asset.snapshot.modifiedSeconds));
    facts_->setText(line.join(QStringLiteral(" · ")));
    facts_->setWordWrap(true);
    mark_->setCheckable(true);
    lock_->setCheckable(true);
    mark_->setFocusPolicy(Qt::NoFocus);
    lock_->setFocusPolicy(Qt::NoFocus);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(8, 8, 8, 8);
    column->setSpacing(4);
    column->addWidget(badge_);
    column->addWidget(reason_);
    column->addWidget(view_, 1);
    column->addWidget(refusal_);
    column->addWidget(name_);
    column->addWidget(folder_);
    column->addWidget(facts_);
    column->addWidget(quality_);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(mark_);
    buttons->addWidget(lock_);
    column->addLayout(buttons);

    connect(view_, &PictureView::pressed, this, &MemberTile::chosen);
    connect(view_, &PictureView::doubleClicked, this, &MemberTile::enlarge);
    connect(mark_, &QPushButton::clicked, this, [this] {
        Q_EMIT chosen();
        Q_EMIT markClicked();
    });
    connect(lock_, &QPushButton::clicked, this, [this] {
        Q_EMIT chosen();
        Q_EMIT lockClicked();
    });
}

void MemberTile::setFacts(const MemberFacts& facts) {
    QString badge;
    const char* state = "";
    if (facts.isLocked) {
        badge = QLatin1String(texts::kLockedBadge);
        state = "locked";
    } else if (facts.isMarked) {
        badge = QLatin1String(texts::kMarkedBadge);
        state = "marked";
    } else if (facts.isKeeper) {
        badge = QLatin1String(texts::kKeeperBadge);
        state = "keeper";
    }
    badge_->setText(badge.isEmpty() ? QStringLiteral(" ") : badge);
    // Marked and kept copies differ at a glance: the skins colour the badge
    // and a marked copy's picture is dimmed.
    if (badge_->property("badge").toString() != QLatin1String(state)) {
        badge_->setProperty("badge", QLatin1String(state));
        style()->unpolish(badge_);
        style()->polish(badge_);
    }
    view_->setDimmed(facts.isMarked);
    reason_->setText(facts.isKeeper ? facts.keeperReason : QString());
    reason_->setVisible(facts.isKeeper && !facts.keeperReason.isEmpty());
    QStringList quality;
    if (!facts.orientation.isEmpty()) {
        quality << facts.orientation;
    }
    if (!facts.hint.isEmpty()) {
        quality << facts.hint;
    }
    if (facts.qualityScore) {
        quality << tr("Quality %1").arg(*facts.qualityScore);
    }
    if (!facts.faceNote.isEmpty()) {
        quality << facts.faceNote;
    }
    quality_->setText(quality.join(QStringLiteral(" · ")));
    quality_->setVisible(!quality.isEmpty());
    mark_->setChecked(facts.isMarked);
    mark_->setText(facts.isMarked ? tr("Marked") : tr("Mark"));
    lock_->setChecked(facts.isLocked);
    lock_->setText(facts.isLocked ? tr("Locked") : tr("Lock"));
    lock_->setToolTip(QLatin1String(facts.isLocked ? texts::kUnlock : texts::kLock));
}

void MemberTile::setImage(const QImage& image, bool failed) {
    view_->setImage(image, failed ? QLatin1String(texts::kNoPreview) : tr("Loading…"));
    if (!image.isNull() && (!asset_.pixelWidth || !asset_.pixelHeight)) {
        view_->setScenePixels(QSizeF(image.size()));
    }
}

void MemberTile::setSelected(bool selected) {
    if (property("selected").toBool() == selected) {
        return;
    }
    // The skins outline a selected card; only this tile is styled again.
    setProperty("selected", selected);
    style()->unpolish(this);
    style()->polish(this);
}

void MemberTile::setRefusal(const QString& text) {
    parts::noticeLabel(refusal_)->setText(text);
    refusal_->setVisible(!text.isEmpty());
}

QString MemberTile::refusal() const {
    return !refusal_->isHidden() ? parts::noticeLabel(refusal_)->text() : QString();
}

QString MemberTile::badge() const {
    return badge_->text().trimmed();
}

QString MemberTile::folderText() const {
    return folder_->fullText();
}

QString MemberTile::folderToolTip() const {
    return folder_->toolTip();
}

void MemberTile::contextMenuEvent(QContextMenuEvent* event) {
    Q_EMIT chosen();
    Q_EMIT menuRequested(event->globalPos());
    event->accept();
}

void MemberTile::mousePressEvent(QMouseEvent* event) {
    Q_EMIT chosen();
    QFrame::mousePressEvent(event);
}

} // namespace brevant::gui
