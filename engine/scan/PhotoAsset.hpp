#pragma once

#include "engine/scan/CatalogReference.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/LibraryRef.hpp"
#include "engine/scan/PhotoFormat.hpp"
#include "engine/scan/Relationship.hpp"
#include "engine/support/Hashing.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// One picture as found by any source. Its id is its path.
struct PhotoAsset {
    std::string path;
    std::string root;
    FileSnapshot snapshot;
    PhotoFormat format = PhotoFormat::other;
    std::optional<int> pixelWidth;
    std::optional<int> pixelHeight;
    std::vector<std::string> otherNames;
    std::vector<Relationship> relationships;
    bool isCloudSynced = false;
    bool isReadOnlyVolume = false;
    Boxed<std::string> volumeName;
    bool isExternalVolume = false;
    Boxed<LibraryRef> library;
    // The catalog that lists the photo, when it came from one.
    Boxed<CatalogReference> catalog;

    [[nodiscard]] const std::string& id() const { return path; }

    [[nodiscard]] std::int64_t size() const { return snapshot.size; }

    // The file name, or the library's file name for a library item.
    [[nodiscard]] std::string name() const;
    // The folder holding it, or "Photos Library" for a library item.
    [[nodiscard]] std::string folder() const;

    // Why this copy may never be suggested for removal, if it may not.
    [[nodiscard]] std::optional<std::string> fixedKeepReason() const;

    friend bool operator==(const PhotoAsset&, const PhotoAsset&) = default;
};

void to_json(nlohmann::ordered_json& j, const PhotoAsset& value);
void from_json(const nlohmann::ordered_json& j, PhotoAsset& value);

} // namespace brevant

template <> struct std::hash<brevant::PhotoAsset> {
    std::size_t operator()(const brevant::PhotoAsset& v) const noexcept {
        return brevant::hashing::all(v.path, v.root, v.snapshot, v.format, v.pixelWidth,
                                     v.pixelHeight, v.otherNames, v.relationships, v.isCloudSynced,
                                     v.isReadOnlyVolume, v.volumeName, v.isExternalVolume,
                                     v.library, v.catalog);
    }
};
