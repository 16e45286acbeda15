#pragma once

#include "app/gui/DetailLoader.hpp"

#include <QImage>
#include <QPoint>
#include <QPointer>
#include <QRectF>
#include <QSizeF>
#include <QTimer>
#include <QWidget>

#include <optional>
#include <string>

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
    // Where the file's own pixels come from once the preview would be
    // magnified: the visible part is then decoded at full resolution. No
    // loader (or an empty path) keeps to the preview.
    void setDetailSource(DetailLoader* loader, const std::string& path);

    // A dimmed picture is drawn faint: a copy on its way to the Trash.
    void setDimmed(bool dimmed);

    // Screen pixels per pixel of the file, in percent; 0 with no picture.
    [[nodiscard]] double zoomPercent() const;
    // The zoom factor that shows the file's pixels one to one.
    [[nodiscard]] double actualPixelsFactor() const;

    // Where the full-resolution part is drawn: in this widget, and the
    // file's pixels it shows (in the upright picture). Nothing while the
    // preview is drawn.
    struct DetailPlacement {
        QRect target;
        QRect source;
    };

    [[nodiscard]] std::optional<DetailPlacement> detailPlacement() const;

    [[nodiscard]] const QImage& image() const { return image_; }

    // What is shown, in the picture's own pixels.
    [[nodiscard]] QRectF visibleSceneRect() const;

    [[nodiscard]] QSize sizeHint() const override { return {320, 260}; }

Q_SIGNALS:
    // The zoom percentage may have changed (a resize, a new picture).
    void scaleChanged();
    void pressed();
    void doubleClicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // The upright picture's own size, as far as it is known.
    [[nodiscard]] QSizeF fullPixels() const;
    // The preview is drawn larger than its own pixels.
    [[nodiscard]] bool magnified() const;
    // What is shown, in the upright picture's pixels.
    [[nodiscard]] QRectF visibleFullRect() const;
    [[nodiscard]] bool detailCovers() const;
    void zoomChanged();
    void requestDetail();
    void detailArrived(int ticket, const PictureDetail& detail);
    // Where the shown part lands in the widget, its proportions kept.
    [[nodiscard]] QRectF target() const;
    [[nodiscard]] QRectF source() const;

    QPointer<SceneZoom> zoom_;
    QImage image_;
    QString placeholder_;
    QSizeF scenePixels_;
    QPoint lastDrag_;
    bool dimmed_ = false;
    QPointer<DetailLoader> details_;
    std::string path_;
    int ticket_ = 0;
    PictureDetail detail_;
    // Zooming and panning settle before a decode is asked for.
    QTimer* settle_;
};

} // namespace brevant::gui
