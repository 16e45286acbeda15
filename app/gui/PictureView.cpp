#include "PictureView.hpp"

#include "app/gui/SceneZoom.hpp"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace brevant::gui {

namespace {

// One wheel notch zooms by this much.
constexpr double kWheelRatio = 1.25;

} // namespace

PictureView::PictureView(SceneZoom* zoom, QWidget* parent)
    : QWidget(parent)
    , zoom_(zoom) {
    setMinimumSize(120, 100);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    connect(zoom_, &SceneZoom::changed, this, qOverload<>(&QWidget::update));
}

void PictureView::setImage(const QImage& image, const QString& placeholder) {
    image_ = image;
    placeholder_ = placeholder;
    update();
}

void PictureView::setScenePixels(QSizeF pixels) {
    scenePixels_ = pixels;
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
    painter.drawImage(target(), image_, source());
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
