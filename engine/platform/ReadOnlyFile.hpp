#pragma once

#include "engine/platform/FileStatus.hpp"

#include <cstddef>
#include <expected>
#include <optional>
#include <span>
#include <string>

namespace brevant::platform {

// A file opened for reading only and never through a symbolic link at the
// end of its path. Closed when the handle goes away.
class ReadOnlyFile {
public:
    // The system's error number when the file cannot be opened.
    [[nodiscard]] static std::expected<ReadOnlyFile, int> open(const std::string& path);

    ReadOnlyFile(const ReadOnlyFile&) = delete;
    ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;
    ReadOnlyFile(ReadOnlyFile&& other) noexcept;
    ReadOnlyFile& operator=(ReadOnlyFile&& other) noexcept;
    ~ReadOnlyFile();

    // One read of at most the buffer's size; 0 at the end of the file, the
    // system's error number on failure.
    [[nodiscard]] std::expected<std::size_t, int> read(std::span<std::byte> buffer);

    // Reads until the buffer is full or the file ends.
    [[nodiscard]] std::expected<std::size_t, int> fill(std::span<std::byte> buffer);

    // The status of the open file itself (not of its path).
    [[nodiscard]] std::optional<FileStatus> status() const;

    // Tells the kernel the whole file will be read from start to end.
    void adviseSequential() const;

    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    explicit ReadOnlyFile(int descriptor)
        : descriptor_(descriptor) {}

    int descriptor_ = -1;
};

} // namespace brevant::platform
