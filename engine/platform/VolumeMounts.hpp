#pragma once

#include "engine/platform/Mounts.hpp"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace brevant::platform {

// Where a file system known by its UUID is mounted today: the way back from
// a place that outlasts a mount (see VolumeIds) to a path. Tests give their
// own.
class VolumeMounts {
public:
    VolumeMounts() = default;
    VolumeMounts(const VolumeMounts&) = delete;
    VolumeMounts& operator=(const VolumeMounts&) = delete;
    VolumeMounts(VolumeMounts&&) = delete;
    VolumeMounts& operator=(VolumeMounts&&) = delete;
    virtual ~VolumeMounts() = default;

    // The mount point that shows the whole file system with this UUID
    // (compared without regard to case, as FAT volumes write theirs in
    // capitals); nothing when the drive is not connected or only a part of
    // it is mounted.
    [[nodiscard]] virtual std::optional<std::string> mountPoint(std::string_view uuid) const = 0;

    // This computer's: /dev/disk/by-uuid and /proc/self/mountinfo, read as
    // it is made.
    [[nodiscard]] static std::shared_ptr<const VolumeMounts> system();
};

// The system's answer over given tables: `devices` are the block device
// numbers by UUID.
class MountedVolumeMounts final : public VolumeMounts {
public:
    MountedVolumeMounts(MountTable mounts, const std::map<std::string, std::uint64_t>& devices);

    [[nodiscard]] std::optional<std::string> mountPoint(std::string_view uuid) const override;

private:
    MountTable mounts_;
    // Lowercased UUIDs.
    std::map<std::string, std::uint64_t, std::less<>> devices_;
};

} // namespace brevant::platform
