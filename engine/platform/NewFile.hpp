#pragma once

#include "engine/platform/FileStatus.hpp"

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <sys/types.h>

namespace brevant::platform {

// A file Brevant makes for itself, created exclusively: never over an
// existing file and never through a symbolic link. Closed when the handle
// goes away; what was written stays.
class NewFile {
public:
    // Creates the file write-only with the permission bits given; the
    // system's error number when it cannot (EEXIST: the name is taken).
    [[nodiscard]] static std::expected<NewFile, int> create(const std::string& path,
                                                            mode_t permissions);

    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    NewFile(NewFile&& other) noexcept;
    NewFile& operator=(NewFile&& other) noexcept;
    ~NewFile();

    // Writes all the bytes at the current position.
    [[nodiscard]] std::expected<void, int> write(std::span<const std::uint8_t> bytes);
    // Moves the position; `whence` as lseek's. The new position.
    [[nodiscard]] std::expected<std::int64_t, int> seek(std::int64_t offset, int whence);
    // Forces the contents to the storage device.
    [[nodiscard]] std::expected<void, int> sync();

    [[nodiscard]] int descriptor() const { return descriptor_; }

    // Removes a file that Brevant itself created and that is still that file
    // (same device and inode, a regular file): an unfinished or refused copy.
    // Never used on a file of the user's. ESTALE when another file has taken
    // the name.
    [[nodiscard]] static std::expected<void, int>
    removeOwn(const std::string& path, std::uint64_t device, std::uint64_t inode);

    // Gives the file at `path` (not through a final symbolic link) the
    // modification time given, leaving its access time.
    [[nodiscard]] static std::expected<void, int>
    setModified(const std::string& path, std::int64_t seconds, std::int64_t nanoseconds);

private:
    explicit NewFile(int descriptor)
        : descriptor_(descriptor) {}

    int descriptor_ = -1;
};

} // namespace brevant::platform
