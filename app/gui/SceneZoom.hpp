#pragma once

#include <QObject>
#include <QPointF>
#include <QRectF>

namespace brevant::gui {

// One zoom and pan shared by every picture of a comparison. It is kept as a
// fraction of the scene, not in pixels, so a picture and its half-size copy
// show the same part of the scene at every step.
class SceneZoom : public QObject {
    Q_OBJECT

public:
    static constexpr double kStep = 2.0;
    static constexpr double kMaxFactor = 32.0;

    explicit SceneZoom(QObject* parent = nullptr);

    // 1 shows the whole picture; 2 half its width and height.
    [[nodiscard]] double factor() const { return factor_; }

    // The middle of what is shown, as a fraction of the picture.
    [[nodiscard]] QPointF centre() const { return centre_; }

    // What is shown, as a fraction of the picture (0 to 1 each way).
    [[nodiscard]] QRectF visibleFraction() const;
    // The same in a picture of this many pixels.
    [[nodiscard]] QRectF visibleRect(double width, double height) const;

    void zoomIn();
    void zoomOut();
    void fit();
    // Sets the factor, keeping the middle of what is shown.
    void zoomTo(double factor);
    // Zooms by `ratio`, keeping the point `anchor` (a fraction of the
    // picture) where it is on the screen.
    void zoomBy(double ratio, QPointF anchor);
    // Moves what is shown by a fraction of the picture.
    void panBy(QPointF delta);

Q_SIGNALS:
    void changed();

private:
    void set(double factor, QPointF centre);

    double factor_ = 1.0;
    QPointF centre_{0.5, 0.5};
};

} // namespace brevant::gui
