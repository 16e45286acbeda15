#pragma once

#include "app/gui/Worker.hpp"
#include "engine/platform/DecodedImage.hpp"
#include "engine/scan/PhotoAsset.hpp"

#include <QCache>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QString>

namespace brevant::gui {

// Upright thumbnails decoded through the engine's decoder (HEIC and camera
// RAW included) on worker threads, never on the interface thread, and kept
// in a memory cache of our own for the life of the window, so a group
// shown again draws at once. The cache is keyed by path, size and
// modification time: a file changed since is decoded again.
class ThumbnailLoader : public QObject {
    Q_OBJECT

public:
    // The long side decoded: enough for a large view on most screens.
    static constexpr int kSide = 1600;
    // What the cache may hold, in kilobytes of pixels.
    static constexpr int kCacheKilobytes = 384 * 1024;

    explicit ThumbnailLoader(QObject* parent = nullptr);
    ThumbnailLoader(const ThumbnailLoader&) = delete;
    ThumbnailLoader& operator=(const ThumbnailLoader&) = delete;
    ThumbnailLoader(ThumbnailLoader&&) = delete;
    ThumbnailLoader& operator=(ThumbnailLoader&&) = delete;
    // Waits for the decodes under way.
    ~ThumbnailLoader() override;

    // The thumbnail when it is ready; otherwise a null image, and a decode
    // starts unless one is under way or the file could not be decoded.
    [[nodiscard]] QImage thumbnail(const PhotoAsset& asset);
    // The file could not be read as a picture.
    [[nodiscard]] bool failed(const PhotoAsset& asset) const;
    // The capture date in the picture's EXIF data, as written there; empty
    // when it has none or is not decoded yet.
    [[nodiscard]] QString captureDate(const PhotoAsset& asset) const;

    [[nodiscard]] int pending() const { return static_cast<int>(pending_.size()); }

    // The decoded pixels as a QImage; null when they cannot be read.
    [[nodiscard]] static QImage toImage(const platform::DecodedImage& decoded);

    // For tests and screenshots: until every decode has arrived.
    void waitForDone();

Q_SIGNALS:
    // A decode finished, well or not.
    void loaded(const QString& path);

private:
    struct Entry {
        QImage image;
        QString captureDate;
        bool failed = false;
    };

    [[nodiscard]] static QString key(const PhotoAsset& asset);
    void arrive(const QString& key, const QString& path, const Entry& entry);

    QCache<QString, Entry> cache_;
    QSet<QString> pending_;
    // Last: the decodes under way finish before the cache goes.
    Worker worker_;
};

} // namespace brevant::gui
