#pragma once

#include "engine/platform/Mounts.hpp"

#include <optional>
#include <string>

namespace brevant::platform {

// What the user would want to know of the volume holding a picture.
struct VolumeInfo {
    // The file system's label, else the last component of its mount point;
    // none for an unlabelled root file system.
    std::optional<std::string> name;
    // Mounted read-only (statvfs ST_RDONLY).
    bool isReadOnly = false;
    // Not the root file system's device, and either a removable or USB
    // block device or mounted under /media, /run/media or /mnt.
    bool isExternal = false;

    friend bool operator==(const VolumeInfo&, const VolumeInfo&) = default;
};

// The facts of the volume holding the path, from the mount that holds it.
[[nodiscard]] VolumeInfo volumeInfo(const std::string& path, const MountTable& mounts);

} // namespace brevant::platform
