#include "DetailLoader.hpp"

#include "app/gui/ThumbnailLoader.hpp"
#include "engine/platform/RegionDecoder.hpp"

namespace brevant::gui {

DetailLoader::DetailLoader(QObject* parent)
    : QObject(parent)
    , worker_(*this, 1) {}

DetailLoader::~DetailLoader() = default;

int DetailLoader::request(const std::string& path, const QRectF& fraction) {
    int ticket = ++lastTicket_;
    ++pending_;
    waiting_[ticket] = worker_.run(
        [path, fraction](const CancellationFlag& cancel) {
            PictureDetail detail;
            if (cancel.isCancelled()) {
                return detail;
            }
            auto region = platform::RegionDecoder::decode(path, fraction.x(), fraction.y(),
                                                          fraction.width(), fraction.height());
            if (!region) {
                return detail;
            }
            detail.image = ThumbnailLoader::toImage(region->pixels);
            detail.area =
                QRect(region->left, region->top, region->pixels.width(), region->pixels.height());
            detail.full = QSize(region->fullWidth, region->fullHeight);
            return detail;
        },
        [this, ticket](const PictureDetail& detail) {
            --pending_;
            waiting_.erase(ticket);
            Q_EMIT arrived(ticket, detail);
        });
    return ticket;
}

void DetailLoader::cancel(int ticket) {
    if (auto found = waiting_.find(ticket); found != waiting_.end() && found->second) {
        found->second->cancel();
    }
}

void DetailLoader::waitForDone() {
    worker_.waitForDone();
}

} // namespace brevant::gui
