#include "Volumes.hpp"

#include "engine/platform/FileStatus.hpp"
#include "engine/support/PathNames.hpp"

#include <array>
#include <cctype>
#include <charconv>
#include <dirent.h>
#include <fmt/format.h>
#include <fstream>
#include <sys/statvfs.h>

namespace brevant::platform {

namespace {

// udev writes unsafe characters of a label as \xNN.
std::string unescapeLabel(std::string_view label) {
    std::string out;
    for (std::size_t i = 0; i < label.size(); ++i) {
        if (label[i] == '\\' && i + 3 < label.size() && label[i + 1] == 'x' &&
            std::isxdigit(static_cast<unsigned char>(label[i + 2])) != 0 &&
            std::isxdigit(static_cast<unsigned char>(label[i + 3])) != 0) {
            unsigned value = 0;
            std::from_chars(label.data() + i + 2, label.data() + i + 4, value, 16);
            out.push_back(static_cast<char>(value));
            i += 3;
            continue;
        }
        out.push_back(label[i]);
    }
    return out;
}

std::optional<std::string> labelOf(const std::string& source) {
    if (!source.starts_with("/dev/")) {
        return std::nullopt;
    }
    auto device = realPath(source);
    if (!device) {
        return std::nullopt;
    }
    static constexpr const char* kLabels = "/dev/disk/by-label";
    DIR* folder = ::opendir(kLabels);
    if (folder == nullptr) {
        return std::nullopt;
    }
    std::optional<std::string> label;
    while (const dirent* entry = ::readdir(folder)) {
        std::string name = entry->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        if (realPath(std::string(kLabels) + "/" + name) == device) {
            label = unescapeLabel(name);
            break;
        }
    }
    ::closedir(folder);
    return label;
}

std::string firstLine(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);
    return line;
}

// The block device is removable or hangs off a USB bus. A partition's own
// sysfs folder has no "removable"; its disk, one level up, does.
bool isRemovableOrUsb(const MountEntry& mount) {
    auto device = realPath(fmt::format("/sys/dev/block/{}:{}", mount.major, mount.minor));
    if (!device) {
        return false;
    }
    if (device->find("/usb") != std::string::npos) {
        return true;
    }
    return firstLine(*device + "/removable") == "1" ||
           firstLine(PathNames::parentFolder(*device) + "/removable") == "1";
}

bool isUnderRemovableMountFolder(const std::string& mountPoint) {
    static constexpr std::array<std::string_view, 3> kFolders = {"/media", "/run/media", "/mnt"};
    for (auto folder : kFolders) {
        if (PathNames::isInside(mountPoint, folder)) {
            return true;
        }
    }
    return false;
}

} // namespace

VolumeInfo volumeInfo(const std::string& path, const MountTable& mounts) {
    VolumeInfo info;
    struct statvfs status{};
    if (::statvfs(path.c_str(), &status) == 0) {
        info.isReadOnly = (status.f_flag & ST_RDONLY) != 0;
    }
    const MountEntry* mount = mounts.mountFor(path);
    if (mount == nullptr) {
        return info;
    }
    info.name = labelOf(mount->source);
    if (!info.name && mount->mountPoint != "/") {
        info.name = PathNames::lastComponent(mount->mountPoint);
    }
    const MountEntry* root = mounts.mountFor("/");
    bool rootDevice = root != nullptr && root->major == mount->major && root->minor == mount->minor;
    info.isExternal =
        !rootDevice && (isUnderRemovableMountFolder(mount->mountPoint) || isRemovableOrUsb(*mount));
    return info;
}

} // namespace brevant::platform
