#include "VolumeMounts.hpp"

#include "engine/platform/VolumeIds.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sys/stat.h>
#include <utility>

namespace brevant::platform {

namespace {

constexpr const char* kByUuid = "/dev/disk/by-uuid";

std::string lowercased(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

// The block device each UUID in /dev/disk/by-uuid names.
std::map<std::string, std::uint64_t> devicesByUuid() {
    std::map<std::string, std::uint64_t> devices;
    std::error_code error;
    std::filesystem::directory_iterator entries(kByUuid, error);
    if (error) {
        return devices;
    }
    for (const auto& entry : entries) {
        struct stat status{};
        // The links lead to the block devices: follow them.
        if (::stat(entry.path().c_str(), &status) == 0 && S_ISBLK(status.st_mode)) {
            devices.emplace(entry.path().filename().string(),
                            static_cast<std::uint64_t>(status.st_rdev));
        }
    }
    return devices;
}

} // namespace

std::shared_ptr<const VolumeMounts> VolumeMounts::system() {
    return std::make_shared<const MountedVolumeMounts>(MountTable::load(), devicesByUuid());
}

MountedVolumeMounts::MountedVolumeMounts(MountTable mounts,
                                         const std::map<std::string, std::uint64_t>& devices)
    : mounts_(std::move(mounts)) {
    for (const auto& [uuid, device] : devices) {
        devices_.emplace(lowercased(uuid), device);
    }
}

std::optional<std::string> MountedVolumeMounts::mountPoint(std::string_view uuid) const {
    auto device = devices_.find(lowercased(uuid));
    if (device == devices_.end()) {
        return std::nullopt;
    }
    auto number = MountedVolumeIds::split(device->second);
    // The first mount of the whole file system: a later bind mount of it
    // elsewhere shows the same files.
    const auto& entries = mounts_.entries();
    auto found = std::ranges::find_if(entries, [&number](const MountEntry& entry) {
        return std::pair{entry.major, entry.minor} == number && entry.root == "/";
    });
    if (found == entries.end()) {
        return std::nullopt;
    }
    return found->mountPoint;
}

} // namespace brevant::platform
