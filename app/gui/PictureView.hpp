#pragma once

#include <QImage>
#include <QPoint>
#include <QPointer>
#include <QRectF>
#include <QSizeF>
#include <QWidget>

namespace brevant::gui {

class SceneZoom;

// One picture, drawn upright and whole, or the part of it a shared zoom
// shows. The wheel zooms about the pointer, dragging pans, and both move
// every other view on the same zoom in step.
class PictureView : public QWidget {
    Q_OBJECT

public:
    explicit PictureView(SceneZoom* zoom, QWidget* parent = nullptr);

    // A null image shows `placeholder` instead.
    void setImage(const QImage& image, const QString& placeholder);
    // The picture's own pixel size, which its thumbnail may not have.
    void setScenePixels(QSizeF pixels);

    [[nodiscard]] const QImage& image() const { return image_; }

    // What is shown, in the picture's own pixels.
    [[nodiscard]] QRectF visibleSceneRect() const;

    [[nodiscard]] QSize sizeHint() const override { return {320, 260}; }

Q_SIGNALS:
    void pressed();
    void doubleClicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    // Where the shown part lands in the widget, its proportions kept.
    [[nodiscard]] QRectF target() const;
    [[nodiscard]] QRectF source() const;

    QPointer<SceneZoom> zoom_;
    QImage image_;
    QString placeholder_;
    QSizeF scenePixels_;
    QPoint lastDrag_;
};

} // namespace brevant::gui
