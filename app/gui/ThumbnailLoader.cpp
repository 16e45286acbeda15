#include "ThumbnailLoader.hpp"

#include "app/gui/QtText.hpp"
#include "engine/platform/ImageDecoder.hpp"

#include <QThread>

#include <algorithm>
#include <cstring>

namespace brevant::gui {

QImage ThumbnailLoader::toImage(const platform::DecodedImage& decoded) {
    std::vector<std::uint8_t> samples = decoded.rgbSamples();
    int width = decoded.width();
    int height = decoded.height();
    if (width < 1 || height < 1 ||
        samples.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3) {
        return {};
    }
    QImage image(width, height, QImage::Format_RGB888);
    auto rowBytes = static_cast<std::size_t>(width) * 3;
    for (int y = 0; y < height; ++y) {
        std::memcpy(image.scanLine(y), samples.data() + static_cast<std::size_t>(y) * rowBytes,
                    rowBytes);
    }
    return image;
}

ThumbnailLoader::ThumbnailLoader(QObject* parent)
    : QObject(parent)
    // Two decodes at a time keep the window lively on small machines.
    , worker_(*this, std::min(2, std::max(1, QThread::idealThreadCount()))) {
    cache_.setMaxCost(kCacheKilobytes);
}

ThumbnailLoader::~ThumbnailLoader() = default;

QString ThumbnailLoader::key(const PhotoAsset& asset) {
    return QStringLiteral("%1\n%2\n%3.%4")
        .arg(qtText(asset.path))
        .arg(asset.snapshot.size)
        .arg(asset.snapshot.modifiedSeconds)
        .arg(asset.snapshot.modifiedNanoseconds);
}

QImage ThumbnailLoader::thumbnail(const PhotoAsset& asset) {
    QString wanted = key(asset);
    if (const Entry* entry = cache_.object(wanted)) {
        return entry->image;
    }
    if (pending_.contains(wanted) || asset.library) {
        return {};
    }
    pending_.insert(wanted);
    std::string path = asset.path;
    worker_.run(
        [path](const CancellationFlag&) {
            Entry entry;
            if (auto decoded = platform::ImageDecoder::decode(path, kSide)) {
                entry.image = toImage(decoded->thumbnail);
                entry.captureDate =
                    qtText(decoded->properties.dateTimeOriginal.value_or(std::string()));
            }
            entry.failed = entry.image.isNull();
            return entry;
        },
        [this, wanted, path](const Entry& entry) { arrive(wanted, qtText(path), entry); });
    return {};
}

void ThumbnailLoader::arrive(const QString& key, const QString& path, const Entry& entry) {
    pending_.remove(key);
    auto cost = static_cast<int>(entry.image.sizeInBytes() / 1024) + 1;
    cache_.insert(key, new Entry(entry), cost);
    Q_EMIT loaded(path);
}

bool ThumbnailLoader::failed(const PhotoAsset& asset) const {
    const Entry* entry = cache_.object(key(asset));
    return entry != nullptr && entry->failed;
}

QString ThumbnailLoader::captureDate(const PhotoAsset& asset) const {
    const Entry* entry = cache_.object(key(asset));
    return entry != nullptr ? entry->captureDate : QString();
}

void ThumbnailLoader::waitForDone() {
    worker_.waitForDone();
}

} // namespace brevant::gui
