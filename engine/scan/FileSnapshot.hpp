#pragma once

#include "engine/support/Date.hpp"
#include "engine/support/Hashing.hpp"

#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace brevant {

namespace platform {
struct FileStatus;
}

// One file on one volume; two names with the same identity are hard links.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
    friend auto operator<=>(const FileIdentity&, const FileIdentity&) = default;
};

// What the file system said about one path at one moment.
struct FileSnapshot {
    FileIdentity identity;
    std::int64_t size = 0;
    std::int64_t modifiedSeconds = 0;
    std::int64_t modifiedNanoseconds = 0;
    std::uint32_t linkCount = 0;
    bool isRegularFile = false;
    bool isSymbolicLink = false;
    // Linux has no file flags word; always 0 here, kept for the stored form.
    std::uint32_t flags = 0;

    static constexpr std::uint32_t kDatalessFlag = 0x40000000;

    [[nodiscard]] static FileSnapshot from(const platform::FileStatus& status);

    // The status of the path itself, never following a final symbolic link.
    [[nodiscard]] static std::optional<FileSnapshot> read(const std::string& path);

    [[nodiscard]] bool isDataless() const { return (flags & kDatalessFlag) != 0; }

    [[nodiscard]] Date modified() const {
        return Date::fromUnix(modifiedSeconds, modifiedNanoseconds);
    }

    // Link count and flags are left out: a new hard link or a downloaded cloud
    // file is not a change of the picture.
    [[nodiscard]] bool isUnchanged(const FileSnapshot& other) const;

    friend bool operator==(const FileSnapshot&, const FileSnapshot&) = default;
};

void to_json(nlohmann::ordered_json& j, const FileIdentity& value);
void from_json(const nlohmann::ordered_json& j, FileIdentity& value);
void to_json(nlohmann::ordered_json& j, const FileSnapshot& value);
void from_json(const nlohmann::ordered_json& j, FileSnapshot& value);

} // namespace brevant

template <> struct std::hash<brevant::FileIdentity> {
    std::size_t operator()(const brevant::FileIdentity& id) const noexcept {
        return std::hash<std::uint64_t>{}(id.device * 0x9E3779B97F4A7C15ULL ^ id.inode);
    }
};

template <> struct std::hash<brevant::FileSnapshot> {
    std::size_t operator()(const brevant::FileSnapshot& v) const noexcept {
        return brevant::hashing::all(v.identity, v.size, v.modifiedSeconds, v.modifiedNanoseconds,
                                     v.linkCount, v.isRegularFile, v.isSymbolicLink, v.flags);
    }
};
