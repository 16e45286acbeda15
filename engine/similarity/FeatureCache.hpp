#pragma once

#include "engine/platform/VolumeIds.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/similarity/FaceReading.hpp"
#include "engine/similarity/ImageFeatures.hpp"

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace brevant {

// Measurements kept across runs, so a second scan measures only new or
// changed files. A file on a file system with a UUID is known by that UUID,
// its path inside the file system, its size and modification time: a drive
// that comes back at another mount point (or device number) is not measured
// again. Other files, and entries written before, are known by the file's
// identity, size and modification time. Shared by the measuring workers;
// every operation holds the one lock.
class FeatureCache {
public:
    // Loads the file when there is one; a missing or damaged file gives an
    // empty cache, silently. Without a path nothing is ever read or written.
    // `volumes` tells the file systems' UUIDs (tests give their own).
    explicit FeatureCache(
        std::optional<std::string> path,
        std::shared_ptr<const platform::VolumeIds> volumes = platform::VolumeIds::system());

    FeatureCache(const FeatureCache&) = delete;
    FeatureCache& operator=(const FeatureCache&) = delete;
    FeatureCache(FeatureCache&&) = delete;
    FeatureCache& operator=(FeatureCache&&) = delete;
    ~FeatureCache() = default;

    // "device:inode:size:seconds.nanoseconds", each number in plain decimal
    // without padding. Replacing, editing or touching a file changes it.
    [[nodiscard]] static std::string key(const FileSnapshot& snapshot);
    // "uuid:<UUID>:size:seconds.nanoseconds:<path inside>".
    [[nodiscard]] static std::string key(const platform::VolumePlace& place,
                                         const FileSnapshot& snapshot);

    // The stored record when it was made by this measuring pipeline, with a
    // current feature print (or none) and a current quality score (or none);
    // a face reading of an older face check is left out of the answer.
    [[nodiscard]] std::optional<ImageFeatures> lookup(const PhotoAsset& asset) const;

    void store(const PhotoAsset& asset, ImageFeatures features);

    // The stored face reading, when it is of the current face check.
    [[nodiscard]] std::optional<FaceReading> faces(const PhotoAsset& asset) const;

    // Adds a face reading to the asset's stored record; without a record
    // there is nothing to add it to.
    void storeFaces(const PhotoAsset& asset, FaceReading reading);

    // Writes the whole cache, only when something changed since the last
    // save, as a binary property list replacing the file atomically. A
    // failure is silent and leaves the changes to the next save.
    void save();

    [[nodiscard]] std::size_t count() const;

private:
    void load();
    // The asset's keys, the one it is stored under first; the lock is held.
    [[nodiscard]] std::vector<std::string> keys(const PhotoAsset& asset) const;
    // Its entry under any of its keys; the lock is held.
    [[nodiscard]] const ImageFeatures* entry(const PhotoAsset& asset) const;

    std::optional<std::string> path_;
    std::shared_ptr<const platform::VolumeIds> volumes_;
    mutable std::mutex mutex_;
    std::unordered_map<std::string, ImageFeatures> entries_;
    bool dirty_ = false;
};

} // namespace brevant
