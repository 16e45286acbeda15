#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform {

// One line of /proc/self/mountinfo.
struct MountEntry {
    std::string mountPoint;
    // The folder of the file system that appears at the mount point: "/"
    // unless only part of it is mounted there (a bind mount, a subvolume).
    std::string root;
    std::string fileSystemType;
    std::string source;
    unsigned major = 0;
    unsigned minor = 0;
    std::string options;
};

class MountTable {
public:
    // The current process's mounts; empty when they cannot be read.
    [[nodiscard]] static MountTable load();
    // Parses the mountinfo format (tests feed their own text).
    [[nodiscard]] static MountTable parse(std::string_view mountinfo);

    // The mount holding the path: the longest mount point it lies inside;
    // among equal ones the last, which hides the earlier.
    [[nodiscard]] const MountEntry* mountFor(std::string_view path) const;

    [[nodiscard]] const std::vector<MountEntry>& entries() const { return entries_; }

private:
    std::vector<MountEntry> entries_;
};

// File systems that live on another machine.
[[nodiscard]] bool isNetworkFileSystem(std::string_view type);

// The folder's volume is a network volume.
[[nodiscard]] bool isOnNetworkVolume(const std::string& path);

} // namespace brevant::platform
