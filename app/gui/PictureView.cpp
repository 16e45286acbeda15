#include "PictureView.hpp"

#include "app/gui/SceneZoom.hpp"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace brevant::gui {

namespace {

// One wheel notch zooms by this much.
constexpr double kWheelRatio = 1.25;
// How long zooming and panning rest before the file is decoded.
constexpr int kSettleMs = 150;
// Around what is shown, this share of it each way is decoded too, so that
// a short pan needs no new decode.
constexpr double kMargin = 0.25;
// A marked copy's picture shows through this much.
constexpr double kDimmedOpacity = 0.45;

} // namespace

PictureView::PictureView(SceneZoom* zoom, QWidget* parent)
    : QWidget(parent)
    , zoom_(zoom)
    , settle_(new QTimer(this)) {
    setMinimumSize(120, 100);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    settle_->setSingleShot(true);
    settle_->setInterval(kSettleMs);
    connect(settle_, &QTimer::timeout, this, &PictureView::requestDetail);
    connect(zoom_, &SceneZoom::changed, this, &PictureView::zoomChanged);
}

void PictureView::setImage(const QImage& image, const QString& placeholder) {
    image_ = image;
    placeholder_ = placeholder;
    update();
    settle_->start();
    Q_EMIT scaleChanged();
}

void PictureView::setScenePixels(QSizeF pixels) {
    scenePixels_ = pixels;
}

void PictureView::setDimmed(bool dimmed) {
    if (dimmed_ != dimmed) {
        dimmed_ = dimmed;
        update();
    }
}

void PictureView::setDetailSource(DetailLoader* loader, const std::string& path) {
    if (loader == details_ && path == path_) {
        return;
    }
    if (details_ != nullptr) {
        disconnect(details_, nullptr, this, nullptr);
    }
    details_ = loader;
    path_ = path;
    detail_ = {};
    ticket_ = 0;
    if (details_ != nullptr) {
        connect(details_, &DetailLoader::arrived, this, &PictureView::detailArrived);
    }
    settle_->start();
}

QSizeF PictureView::fullPixels() const {
    if (!detail_.isNull()) {
        return QSizeF(detail_.full);
    }
    QSizeF pixels = scenePixels_.isEmpty() ? QSizeF(image_.size()) : scenePixels_;
    // The header's size is stored before the orientation turns the
    // picture; the upright preview says which way round it is.
    bool previewTall = image_.height() > image_.width();
    bool pixelsTall = pixels.height() > pixels.width();
    if (!image_.isNull() && previewTall != pixelsTall) {
        pixels.transpose();
    }
    return pixels;
}

double PictureView::zoomPercent() const {
    QRectF shown = target();
    QRectF visible = visibleFullRect();
    if (shown.isEmpty() || visible.isEmpty()) {
        return 0;
    }
    return shown.width() / visible.width() * 100.0;
}

double PictureView::actualPixelsFactor() const {
    double percent = zoomPercent();
    if (percent <= 0) {
        return 1.0;
    }
    return zoom_->factor() * 100.0 / percent;
}

QRectF PictureView::visibleFullRect() const {
    QSizeF full = fullPixels();
    return zoom_->visibleRect(full.width(), full.height());
}

bool PictureView::magnified() const {
    QRectF shown = target();
    QRectF drawn = source();
    // A little over one to one still shows the preview's own blur.
    return !shown.isEmpty() && !drawn.isEmpty() && shown.width() > drawn.width() * 1.05;
}

bool PictureView::detailCovers() const {
    if (detail_.isNull()) {
        return false;
    }
    QRectF area = QRectF(detail_.area).adjusted(-0.5, -0.5, 0.5, 0.5);
    return area.contains(visibleFullRect());
}

void PictureView::zoomChanged() {
    update();
    settle_->start();
    Q_EMIT scaleChanged();
}

void PictureView::requestDetail() {
    if (details_ == nullptr || path_.empty() || image_.isNull() || !magnified() || detailCovers()) {
        return;
    }
    QRectF fraction = zoom_->visibleFraction();
    QRectF wanted = fraction.adjusted(-fraction.width() * kMargin, -fraction.height() * kMargin,
                                      fraction.width() * kMargin, fraction.height() * kMargin) &
                    QRectF(0, 0, 1, 1);
    details_->cancel(ticket_);
    ticket_ = details_->request(path_, wanted);
}

void PictureView::detailArrived(int ticket, const PictureDetail& detail) {
    if (ticket != ticket_ || detail.isNull()) {
        return;
    }
    detail_ = detail;
    update();
    Q_EMIT scaleChanged();
}

std::optional<PictureView::DetailPlacement> PictureView::detailPlacement() const {
    if (!magnified() || !detailCovers()) {
        return std::nullopt;
    }
    QRectF shown = target();
    QRectF wanted = visibleFullRect();
    QRectF from = wanted.translated(-QPointF(detail_.area.topLeft()));
    // One to one: whole pixels, so that each of the file's pixels is one
    // on the screen, unblurred.
    if (std::abs(shown.width() - wanted.width()) < 0.5 &&
        std::abs(shown.height() - wanted.height()) < 0.5) {
        QPoint corner(static_cast<int>(std::lround(from.x())),
                      static_cast<int>(std::lround(from.y())));
        QSize size(std::min(static_cast<int>(std::lround(shown.width())),
                            detail_.image.width() - corner.x()),
                   std::min(static_cast<int>(std::lround(shown.height())),
                            detail_.image.height() - corner.y()));
        QPoint at(static_cast<int>(std::lround(shown.x())),
                  static_cast<int>(std::lround(shown.y())));
        return DetailPlacement{QRect(at, size), QRect(corner + detail_.area.topLeft(), size)};
    }
    return DetailPlacement{shown.toAlignedRect(), wanted.toAlignedRect()};
}

QRectF PictureView::visibleSceneRect() const {
    QSizeF pixels = scenePixels_.isEmpty() ? QSizeF(image_.size()) : scenePixels_;
    return zoom_->visibleRect(pixels.width(), pixels.height());
}

QRectF PictureView::source() const {
    return zoom_->visibleRect(image_.width(), image_.height());
}

QRectF PictureView::target() const {
    QRectF shown = source();
    if (shown.isEmpty()) {
        return {};
    }
    QSizeF fitted = shown.size().scaled(QSizeF(size()), Qt::KeepAspectRatio);
    return {(width() - fitted.width()) / 2, (height() - fitted.height()) / 2, fitted.width(),
            fitted.height()};
}

void PictureView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (image_.isNull()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, placeholder_);
        return;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (dimmed_) {
        painter.setOpacity(kDimmedOpacity);
    }
    if (!magnified() || !detailCovers()) {
        painter.drawImage(target(), image_, source());
        return;
    }
    QRectF wanted = visibleFullRect();
    if (auto placed = detailPlacement(); placed && placed->target.size() == placed->source.size()) {
        painter.drawImage(placed->target, detail_.image,
                          placed->source.translated(-detail_.area.topLeft()));
        return;
    }
    painter.drawImage(target(), detail_.image, wanted.translated(-QPointF(detail_.area.topLeft())));
}

void PictureView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    settle_->start();
    Q_EMIT scaleChanged();
}

void PictureView::wheelEvent(QWheelEvent* event) {
    QRectF shown = target();
    if (shown.isEmpty() || event->angleDelta().y() == 0) {
        return;
    }
    QRectF fraction = zoom_->visibleFraction();
    QPointF at = event->position();
    QPointF anchor(fraction.x() + (at.x() - shown.x()) / shown.width() * fraction.width(),
                   fraction.y() + (at.y() - shown.y()) / shown.height() * fraction.height());
    double notches = event->angleDelta().y() / 120.0;
    zoom_->zoomBy(std::pow(kWheelRatio, notches), anchor);
    event->accept();
}

void PictureView::mousePressEvent(QMouseEvent* event) {
    lastDrag_ = event->position().toPoint();
    Q_EMIT pressed();
    QWidget::mousePressEvent(event);
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    QRectF shown = target();
    if (!(event->buttons() & Qt::LeftButton) || shown.isEmpty()) {
        return;
    }
    QPoint now = event->position().toPoint();
    QPointF moved = now - lastDrag_;
    lastDrag_ = now;
    QRectF fraction = zoom_->visibleFraction();
    // The picture follows the pointer.
    zoom_->panBy({-moved.x() / shown.width() * fraction.width(),
                  -moved.y() / shown.height() * fraction.height()});
}

void PictureView::mouseDoubleClickEvent(QMouseEvent* event) {
    Q_EMIT doubleClicked();
    event->accept();
}

} // namespace brevant::gui
