#pragma once

#include "engine/platform/Mounts.hpp"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace brevant::platform {

// Where a file lies in terms that outlast a mount: the UUID of its file
// system and its path from that file system's top. A drive plugged in again
// at another mount point, or with another device number, gives the same
// place.
struct VolumePlace {
    std::string uuid;
    // Begins with "/".
    std::string pathInside;

    friend bool operator==(const VolumePlace&, const VolumePlace&) = default;
};

// Tells the place of a file on its file system. Tests give their own.
class VolumeIds {
public:
    VolumeIds() = default;
    VolumeIds(const VolumeIds&) = delete;
    VolumeIds& operator=(const VolumeIds&) = delete;
    VolumeIds(VolumeIds&&) = delete;
    VolumeIds& operator=(VolumeIds&&) = delete;
    virtual ~VolumeIds() = default;

    // The place of the file at `path` (absolute, standardized) whose status
    // gave `device`; nothing when its file system has no UUID (tmpfs, a
    // network share, a btrfs subvolume's own device number) or it cannot be
    // told.
    [[nodiscard]] virtual std::optional<VolumePlace> place(const std::string& path,
                                                           std::uint64_t device) const = 0;

    // This computer's: UUIDs from /dev/disk/by-uuid (the block device each
    // names, matched by device number), mounts from /proc/self/mountinfo.
    // Both are read as it is made, so a drive plugged in since is known to
    // the next one made.
    [[nodiscard]] static std::shared_ptr<const VolumeIds> system();
};

// The system's answer over given tables, so it can be tested without the
// machine's own disks: `uuids` by device number.
class MountedVolumeIds final : public VolumeIds {
public:
    MountedVolumeIds(MountTable mounts, std::map<std::uint64_t, std::string> uuids);

    [[nodiscard]] std::optional<VolumePlace> place(const std::string& path,
                                                   std::uint64_t device) const override;

    // "major:minor" of a device number as the mount table writes it.
    [[nodiscard]] static std::pair<unsigned, unsigned> split(std::uint64_t device);

private:
    MountTable mounts_;
    std::map<std::uint64_t, std::string> uuids_;
};

} // namespace brevant::platform
