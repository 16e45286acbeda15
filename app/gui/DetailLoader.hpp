#pragma once

#include "app/gui/Worker.hpp"

#include <QImage>
#include <QObject>
#include <QRect>
#include <QRectF>
#include <QSize>

#include <map>
#include <memory>
#include <string>

namespace brevant::gui {

// A part of an upright picture at the file's own resolution.
struct PictureDetail {
    QImage image;
    // Where `image` lies in the upright picture, in its pixels.
    QRect area;
    // The upright picture's whole size.
    QSize full;

    [[nodiscard]] bool isNull() const { return image.isNull(); }
};

// Decodes, on a worker, the parts of pictures that zoomed views show, at
// full resolution: the previews are too small to show a file's real pixels.
// One decode at a time; a view cancels the request it no longer needs, so
// panning never queues up decodes.
class DetailLoader : public QObject {
    Q_OBJECT

public:
    explicit DetailLoader(QObject* parent = nullptr);
    DetailLoader(const DetailLoader&) = delete;
    DetailLoader& operator=(const DetailLoader&) = delete;
    DetailLoader(DetailLoader&&) = delete;
    DetailLoader& operator=(DetailLoader&&) = delete;
    ~DetailLoader() override;

    // Asks for `fraction` (0 to 1 each way) of the upright picture at
    // `path`; answers the ticket that `arrived` will carry.
    int request(const std::string& path, const QRectF& fraction);
    // A request not yet decoded is answered with nothing.
    void cancel(int ticket);

    [[nodiscard]] int pending() const { return pending_; }

    // For tests and screenshots: until every decode has arrived.
    void waitForDone();

Q_SIGNALS:
    // A null detail when the part could not be decoded.
    void arrived(int ticket, const brevant::gui::PictureDetail& detail);

private:
    int lastTicket_ = 0;
    std::map<int, std::shared_ptr<CancellationFlag>> waiting_;
    int pending_ = 0;
    // Last: decodes under way finish before the rest goes.
    Worker worker_;
};

} // namespace brevant::gui
