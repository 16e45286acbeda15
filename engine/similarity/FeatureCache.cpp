#include "FeatureCache.hpp"

#include "engine/platform/BinaryPlist.hpp"
#include "engine/platform/FeaturePrint.hpp"
#include "engine/similarity/FaceCheck.hpp"
#include "engine/similarity/QualityScore.hpp"
#include "engine/support/AtomicFile.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <utility>
#include <vector>

namespace brevant {

namespace {

bool isCurrent(const ImageFeatures& features) {
    if (features.version != ImageFeatures::kPipelineVersion) {
        return false;
    }
    if (features.featurePrint &&
        features.featurePrintRevision != platform::FeaturePrint::kCurrentRevision) {
        return false;
    }
    if (features.isUtility && features.qualityRevision != QualityScore::kRevision) {
        return false;
    }
    return true;
}

} // namespace

FeatureCache::FeatureCache(std::optional<std::string> path,
                           std::shared_ptr<const platform::VolumeIds> volumes)
    : path_(std::move(path))
    , volumes_(std::move(volumes)) {
    load();
}

std::string FeatureCache::key(const FileSnapshot& snapshot) {
    return fmt::format("{}:{}:{}:{}.{}", snapshot.identity.device, snapshot.identity.inode,
                       snapshot.size, snapshot.modifiedSeconds, snapshot.modifiedNanoseconds);
}

std::string FeatureCache::key(const platform::VolumePlace& place, const FileSnapshot& snapshot) {
    return fmt::format("uuid:{}:{}:{}.{}:{}", place.uuid, snapshot.size, snapshot.modifiedSeconds,
                       snapshot.modifiedNanoseconds, place.pathInside);
}

std::vector<std::string> FeatureCache::keys(const PhotoAsset& asset) const {
    std::vector<std::string> keys;
    if (volumes_) {
        if (auto place = volumes_->place(asset.path, asset.snapshot.identity.device)) {
            keys.push_back(key(*place, asset.snapshot));
        }
    }
    keys.push_back(key(asset.snapshot));
    return keys;
}

const ImageFeatures* FeatureCache::entry(const PhotoAsset& asset) const {
    for (const auto& candidate : keys(asset)) {
        if (auto found = entries_.find(candidate); found != entries_.end()) {
            return &found->second;
        }
    }
    return nullptr;
}

std::optional<ImageFeatures> FeatureCache::lookup(const PhotoAsset& asset) const {
    std::lock_guard lock(mutex_);
    const ImageFeatures* found = entry(asset);
    if (found == nullptr || !isCurrent(*found)) {
        return std::nullopt;
    }
    ImageFeatures features = *found;
    // Only the face check is repeated for a reading of another revision.
    if (features.faces && features.faces->revision != FaceCheck::kRevision) {
        features.faces.reset();
    }
    return features;
}

void FeatureCache::store(const PhotoAsset& asset, ImageFeatures features) {
    std::lock_guard lock(mutex_);
    entries_.insert_or_assign(keys(asset).front(), std::move(features));
    dirty_ = true;
}

std::optional<FaceReading> FeatureCache::faces(const PhotoAsset& asset) const {
    std::lock_guard lock(mutex_);
    const ImageFeatures* found = entry(asset);
    if (found == nullptr) {
        return std::nullopt;
    }
    const std::optional<FaceReading>& reading = found->faces;
    if (!reading || reading->revision != FaceCheck::kRevision) {
        return std::nullopt;
    }
    return reading;
}

void FeatureCache::storeFaces(const PhotoAsset& asset, FaceReading reading) {
    std::lock_guard lock(mutex_);
    for (const auto& candidate : keys(asset)) {
        if (auto found = entries_.find(candidate); found != entries_.end()) {
            found->second.faces = reading;
            dirty_ = true;
            return;
        }
    }
}

void FeatureCache::save() {
    std::lock_guard lock(mutex_);
    if (!path_ || !dirty_) {
        return;
    }
    // Sorted keys keep the file the same for the same contents.
    std::vector<const std::pair<const std::string, ImageFeatures>*> sorted;
    sorted.reserve(entries_.size());
    for (const auto& entry : entries_) {
        sorted.push_back(&entry);
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const auto* a, const auto* b) { return a->first < b->first; });
    PlistValue::Dictionary dictionary;
    dictionary.reserve(sorted.size());
    for (const auto* entry : sorted) {
        dictionary.emplace_back(entry->first, toPlist(entry->second));
    }
    std::optional<std::vector<std::uint8_t>> bytes =
        platform::BinaryPlist::encode(PlistValue(std::move(dictionary)));
    if (bytes && AtomicFile::write(*path_, *bytes)) {
        dirty_ = false;
    }
}

std::size_t FeatureCache::count() const {
    std::lock_guard lock(mutex_);
    return entries_.size();
}

void FeatureCache::load() {
    std::lock_guard lock(mutex_);
    if (!path_) {
        return;
    }
    std::optional<std::vector<std::uint8_t>> bytes = AtomicFile::read(*path_);
    if (!bytes) {
        return;
    }
    std::optional<PlistValue> root = platform::BinaryPlist::decode(*bytes);
    const auto* dictionary = root ? root->as<PlistValue::Dictionary>() : nullptr;
    if (dictionary == nullptr) {
        return;
    }
    // A damaged record costs only its own picture a new measurement.
    for (const auto& [entryKey, value] : *dictionary) {
        if (std::optional<ImageFeatures> features = imageFeaturesFromPlist(value)) {
            entries_.insert_or_assign(entryKey, std::move(*features));
        }
    }
}

} // namespace brevant
