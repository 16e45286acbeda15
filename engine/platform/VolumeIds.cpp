#include "VolumeIds.hpp"

#include <filesystem>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <utility>

namespace brevant::platform {

namespace {

constexpr const char* kByUuid = "/dev/disk/by-uuid";

// Device number of each block device named in /dev/disk/by-uuid.
std::map<std::uint64_t, std::string> uuidsByDevice() {
    std::map<std::uint64_t, std::string> uuids;
    std::error_code error;
    std::filesystem::directory_iterator entries(kByUuid, error);
    if (error) {
        return uuids;
    }
    for (const auto& entry : entries) {
        struct stat status{};
        // The links lead to the block devices: follow them.
        if (::stat(entry.path().c_str(), &status) == 0 && S_ISBLK(status.st_mode)) {
            uuids.emplace(static_cast<std::uint64_t>(status.st_rdev),
                          entry.path().filename().string());
        }
    }
    return uuids;
}

std::string joinedInside(const std::string& root, std::string_view rest) {
    if (rest.empty()) {
        return root;
    }
    if (root == "/") {
        return std::string(rest);
    }
    return root + std::string(rest);
}

} // namespace

std::shared_ptr<const VolumeIds> VolumeIds::system() {
    return std::make_shared<const MountedVolumeIds>(MountTable::load(), uuidsByDevice());
}

MountedVolumeIds::MountedVolumeIds(MountTable mounts, std::map<std::uint64_t, std::string> uuids)
    : mounts_(std::move(mounts))
    , uuids_(std::move(uuids)) {}

std::pair<unsigned, unsigned> MountedVolumeIds::split(std::uint64_t device) {
    return {::gnu_dev_major(device), ::gnu_dev_minor(device)};
}

std::optional<VolumePlace> MountedVolumeIds::place(const std::string& path,
                                                   std::uint64_t device) const {
    auto uuid = uuids_.find(device);
    if (uuid == uuids_.end()) {
        return std::nullopt;
    }
    const MountEntry* mount = mounts_.mountFor(path);
    // A mount of another device over the path: the file's own mount is not
    // known, and neither is its path inside.
    if (mount == nullptr || std::pair{mount->major, mount->minor} != split(device)) {
        return std::nullopt;
    }
    std::string_view rest(path);
    rest.remove_prefix(mount->mountPoint == "/" ? 0 : mount->mountPoint.size());
    return VolumePlace{.uuid = uuid->second, .pathInside = joinedInside(mount->root, rest)};
}

} // namespace brevant::platform
