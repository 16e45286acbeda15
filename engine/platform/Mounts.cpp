#include "Mounts.hpp"

#include "engine/support/PathNames.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <sstream>

namespace brevant::platform {

namespace {

// mountinfo writes space, tab, newline and backslash as \ooo.
std::string unescape(std::string_view field) {
    auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
    std::string out;
    out.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        bool escaped = field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) &&
                       isOctal(field[i + 2]) && isOctal(field[i + 3]);
        if (!escaped) {
            out.push_back(field[i]);
            continue;
        }
        int value = (field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0');
        out.push_back(static_cast<char>(value));
        i += 3;
    }
    return out;
}

std::vector<std::string> fields(const std::string& line) {
    std::vector<std::string> out;
    std::istringstream stream(line);
    std::string field;
    while (stream >> field) {
        out.push_back(field);
    }
    return out;
}

} // namespace

MountTable MountTable::load() {
    std::ifstream file("/proc/self/mountinfo");
    std::stringstream text;
    text << file.rdbuf();
    return parse(text.str());
}

MountTable MountTable::parse(std::string_view mountinfo) {
    MountTable table;
    std::istringstream stream{std::string(mountinfo)};
    std::string line;
    while (std::getline(stream, line)) {
        auto parts = fields(line);
        auto separator = std::ranges::find(parts, "-");
        if (parts.size() < 6 || separator == parts.end() || parts.end() - separator < 3) {
            continue;
        }
        MountEntry entry;
        const std::string& device = parts[2];
        auto colon = device.find(':');
        if (colon != std::string::npos) {
            std::from_chars(device.data(), device.data() + colon, entry.major);
            std::from_chars(device.data() + colon + 1, device.data() + device.size(), entry.minor);
        }
        entry.root = unescape(parts[3]);
        entry.mountPoint = unescape(parts[4]);
        entry.options = parts[5];
        entry.fileSystemType = unescape(*(separator + 1));
        entry.source = unescape(*(separator + 2));
        table.entries_.push_back(std::move(entry));
    }
    return table;
}

const MountEntry* MountTable::mountFor(std::string_view path) const {
    const MountEntry* best = nullptr;
    for (const auto& entry : entries_) {
        if (!PathNames::isInside(path, entry.mountPoint)) {
            continue;
        }
        if (best == nullptr || entry.mountPoint.size() >= best->mountPoint.size()) {
            best = &entry;
        }
    }
    return best;
}

bool isNetworkFileSystem(std::string_view type) {
    static constexpr std::array<std::string_view, 26> kNetwork = {"nfs",
                                                                  "nfs4",
                                                                  "cifs",
                                                                  "smb3",
                                                                  "smbfs",
                                                                  "afs",
                                                                  "ncpfs",
                                                                  "9p",
                                                                  "ceph",
                                                                  "glusterfs",
                                                                  "davfs",
                                                                  "coda",
                                                                  "lustre",
                                                                  "gpfs",
                                                                  "orangefs",
                                                                  "beegfs",
                                                                  "sshfs",
                                                                  "fuse.sshfs",
                                                                  "fuse.rclone",
                                                                  "fuse.s3fs",
                                                                  "fuse.davfs",
                                                                  "fuse.gcsfuse",
                                                                  "fuse.glusterfs",
                                                                  "fuse.juicefs",
                                                                  "fuse.gvfsd-fuse",
                                                                  "fuse.afpfs-ng"};
    return std::ranges::find(kNetwork, type) != kNetwork.end();
}

bool isOnNetworkVolume(const std::string& path) {
    MountTable table = MountTable::load();
    const MountEntry* mount = table.mountFor(path);
    return mount != nullptr && isNetworkFileSystem(mount->fileSystemType);
}

} // namespace brevant::platform
