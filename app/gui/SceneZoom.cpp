#include "SceneZoom.hpp"

#include <algorithm>

namespace brevant::gui {

SceneZoom::SceneZoom(QObject* parent)
    : QObject(parent) {}

QRectF SceneZoom::visibleFraction() const {
    double side = 1.0 / factor_;
    return {centre_.x() - side / 2, centre_.y() - side / 2, side, side};
}

QRectF SceneZoom::visibleRect(double width, double height) const {
    QRectF fraction = visibleFraction();
    return {fraction.x() * width, fraction.y() * height, fraction.width() * width,
            fraction.height() * height};
}

void SceneZoom::zoomIn() {
    set(factor_ * kStep, centre_);
}

void SceneZoom::zoomOut() {
    set(factor_ / kStep, centre_);
}

void SceneZoom::zoomTo(double factor) {
    set(factor, centre_);
}

void SceneZoom::fit() {
    set(1.0, {0.5, 0.5});
}

void SceneZoom::zoomBy(double ratio, QPointF anchor) {
    double factor = std::clamp(factor_ * ratio, 1.0, kMaxFactor);
    // The anchor keeps its place: its offset from the centre shrinks with
    // the zoom.
    QPointF centre = anchor + (centre_ - anchor) * (factor_ / factor);
    set(factor, centre);
}

void SceneZoom::panBy(QPointF delta) {
    set(factor_, centre_ + delta);
}

void SceneZoom::set(double factor, QPointF centre) {
    factor = std::clamp(factor, 1.0, kMaxFactor);
    // Never past an edge of the picture.
    double half = 0.5 / factor;
    centre = {std::clamp(centre.x(), half, 1.0 - half), std::clamp(centre.y(), half, 1.0 - half)};
    if (factor == factor_ && centre == centre_) {
        return;
    }
    factor_ = factor;
    centre_ = centre;
    Q_EMIT changed();
}

} // namespace brevant::gui
