#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace brevant::platform {

// What stat says of one file, in the widths the scan records keep.
struct FileStatus {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedSeconds = 0;
    std::int64_t modifiedNanoseconds = 0;
    std::uint32_t linkCount = 0;
    bool isRegularFile = false;
    bool isSymbolicLink = false;

    friend bool operator==(const FileStatus&, const FileStatus&) = default;
};

// lstat: the path itself, a final symbolic link is not followed.
[[nodiscard]] std::optional<FileStatus> statusOfPath(const std::string& path);

// lstat's permission bits (rwx for user, group, others), for a copy made
// to be read by the same people.
[[nodiscard]] std::optional<unsigned> permissionBitsOf(const std::string& path);

// The errno with which lstat of the path fails; 0 when it succeeds.
[[nodiscard]] int statusErrorOf(const std::string& path);

// fstat of an open file.
[[nodiscard]] std::optional<FileStatus> statusOfOpenFile(int descriptor);

// realpath(3); nothing when it fails.
[[nodiscard]] std::optional<std::string> realPath(const std::string& path);

// stat (following links) says it is a folder.
[[nodiscard]] bool isDirectory(const std::string& path);

// The system's error text when the file may not be opened for reading,
// nothing when it may.
[[nodiscard]] std::optional<std::string> readAccessError(const std::string& path);

// strerror text for an errno value.
[[nodiscard]] std::string errorText(int error);

} // namespace brevant::platform
