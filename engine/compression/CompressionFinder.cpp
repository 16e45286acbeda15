#include "CompressionFinder.hpp"

#include "engine/compression/CompressionTexts.hpp"
#include "engine/platform/MotionPhoto.hpp"
#include "engine/platform/PhotoProbe.hpp"
#include "engine/platform/VideoProbe.hpp"
#include "engine/scan/FolderSource.hpp"
#include "engine/support/Date.hpp"

#include <algorithm>
#include <cmath>

namespace brevant {

namespace {

namespace texts = compression_texts;

constexpr int kHevcLongSide = 1920;
constexpr int kHevcShortSide = 1080;

// Shares of a photo's size an HEIC copy at the default quality saves, as
// measured on camera JPEGs and on uncompressed TIFFs.
constexpr double kJpegSaving = 0.45;
constexpr double kTiffSaving = 0.9;
// Bits a second of a 1080p x265 copy at the default quality, on average.
constexpr double kBitsPerSecondAt1080p = 4'000'000;

bool isSmallHevc(const platform::VideoFacts& facts) {
    int longSide = std::max(facts.width, facts.height);
    int shortSide = std::min(facts.width, facts.height);
    return facts.codec == "hevc" && longSide <= kHevcLongSide && shortSide <= kHevcShortSide;
}

struct Looking {
    const CompressionRequest& request;
    CompressionCandidates& found;

    bool considered(const FolderSource::Found& file) {
        if (file.snapshot.size < request.minBytes) {
            return false;
        }
        if (file.snapshot.linkCount >= 2) {
            found.passedOver.push_back({file.path, std::string(texts::kHardLinked)});
            return false;
        }
        return true;
    }

    // A JPEG with a movie appended: the still saves the movie's bytes.
    void motionPhoto(const FolderSource::Found& file) {
        if (file.format != PhotoFormat::jpeg) {
            return;
        }
        auto motion = platform::MotionPhoto::read(file.path);
        if (!motion) {
            return;
        }
        if (file.snapshot.linkCount >= 2) {
            found.passedOver.push_back({file.path, std::string(texts::kHardLinked)});
            return;
        }
        auto facts = platform::PhotoProbe::read(file.path);
        if (!facts) {
            found.passedOver.push_back({file.path, std::string(texts::kUnreadablePhoto)});
            return;
        }
        found.plan.items.push_back({.path = file.path,
                                    .root = file.root,
                                    .snapshot = file.snapshot,
                                    .kind = MediaKind::motionPhoto,
                                    .format = "motion photo",
                                    .width = facts->displayedWidth,
                                    .height = facts->displayedHeight,
                                    .estimatedSaving = motion->movieBytes});
    }

    void photo(const FolderSource::Found& file) {
        if ((file.format != PhotoFormat::jpeg && file.format != PhotoFormat::tiff) ||
            !considered(file)) {
            return;
        }
        auto facts = platform::PhotoProbe::read(file.path);
        if (!facts) {
            found.passedOver.push_back({file.path, std::string(texts::kUnreadablePhoto)});
            return;
        }
        PlannedCompression item{.path = file.path,
                                .root = file.root,
                                .snapshot = file.snapshot,
                                .kind = MediaKind::photo,
                                .format = file.format == PhotoFormat::jpeg ? "JPEG" : "TIFF",
                                .width = facts->displayedWidth,
                                .height = facts->displayedHeight};
        add(std::move(item));
    }

    void video(const FolderSource::Found& file) {
        if (!considered(file)) {
            return;
        }
        auto facts = platform::VideoProbe::read(file.path);
        if (!facts) {
            found.passedOver.push_back({file.path, texts::unreadableVideo(facts.error())});
            return;
        }
        if (isSmallHevc(*facts)) {
            found.passedOver.push_back({file.path, std::string(texts::kAlreadyHevc)});
            return;
        }
        PlannedCompression item{.path = file.path,
                                .root = file.root,
                                .snapshot = file.snapshot,
                                .kind = MediaKind::video,
                                .format = facts->codec,
                                .width = facts->displayedWidth(),
                                .height = facts->displayedHeight(),
                                .durationSeconds = facts->durationSeconds};
        add(std::move(item));
    }

    void add(PlannedCompression item) {
        item.estimatedSaving = CompressionFinder::estimatedSaving(item);
        found.plan.items.push_back(std::move(item));
    }
};

} // namespace

std::int64_t CompressionFinder::estimatedSaving(const PlannedCompression& item) {
    auto size = static_cast<double>(item.snapshot.size);
    if (item.kind == MediaKind::motionPhoto) {
        return item.estimatedSaving;
    }
    if (item.kind == MediaKind::photo) {
        return std::llround(size * (item.format == "TIFF" ? kTiffSaving : kJpegSaving));
    }
    double pixels = std::min(1.0, static_cast<double>(item.width) * item.height /
                                      (static_cast<double>(kHevcLongSide) * kHevcShortSide));
    double copyBytes = item.durationSeconds * kBitsPerSecondAt1080p * std::max(pixels, 0.1) / 8;
    return std::max<std::int64_t>(0, std::llround(size - copyBytes));
}

CompressionCandidates CompressionFinder::find(const CompressionRequest& request,
                                              const CancellationFlag& cancel,
                                              const Progress& progress) {
    CompressionCandidates found;
    auto prepared = FolderSource::prepare(request.folders);
    found.refused = std::move(prepared.refused);
    found.plan.id = Uuid::make();
    found.plan.created = Date{std::floor(Date::now().secondsSinceReferenceDate)};
    found.plan.roots = prepared.roots;
    auto walk = FolderSource::walk(prepared.roots, std::nullopt, cancel, {}, request.videos);
    found.excluded = std::move(walk.excluded);
    found.cancelled = walk.cancelled;
    Looking looking{request, found};
    int looked = 0;
    auto next = [&] {
        if (progress) {
            progress(++looked);
        }
        return !cancel.isCancelled();
    };
    if (request.photos || request.motionPhotos) {
        for (const auto& file : walk.found) {
            if (!next()) {
                found.cancelled = true;
                return found;
            }
            if (request.motionPhotos) {
                looking.motionPhoto(file);
            }
            if (request.photos) {
                looking.photo(file);
            }
        }
    }
    for (const auto& file : walk.videos) {
        if (!next()) {
            found.cancelled = true;
            return found;
        }
        looking.video(file);
    }
    return found;
}

} // namespace brevant
