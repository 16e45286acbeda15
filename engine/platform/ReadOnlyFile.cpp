#include "ReadOnlyFile.hpp"

#include "engine/platform/FileStatus.hpp"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace brevant::platform {

std::expected<ReadOnlyFile, int> ReadOnlyFile::open(const std::string& path) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        return std::unexpected(errno);
    }
    return ReadOnlyFile(descriptor);
}

ReadOnlyFile::ReadOnlyFile(ReadOnlyFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

ReadOnlyFile& ReadOnlyFile::operator=(ReadOnlyFile&& other) noexcept {
    if (this != &other) {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

ReadOnlyFile::~ReadOnlyFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

std::expected<std::size_t, int> ReadOnlyFile::read(std::span<std::byte> buffer) {
    for (;;) {
        ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            return std::unexpected(errno);
        }
    }
}

std::expected<std::size_t, int> ReadOnlyFile::fill(std::span<std::byte> buffer) {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        auto count = read(buffer.subspan(filled));
        if (!count) {
            return count;
        }
        if (*count == 0) {
            break;
        }
        filled += *count;
    }
    return filled;
}

std::optional<FileStatus> ReadOnlyFile::status() const {
    return statusOfOpenFile(descriptor_);
}

void ReadOnlyFile::adviseSequential() const {
    ::posix_fadvise(descriptor_, 0, 0, POSIX_FADV_SEQUENTIAL);
}

} // namespace brevant::platform
