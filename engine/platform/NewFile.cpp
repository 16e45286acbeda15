#include "NewFile.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace brevant::platform {

std::expected<NewFile, int> NewFile::create(const std::string& path, mode_t permissions) {
    int descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, permissions);
    if (descriptor < 0) {
        return std::unexpected(errno);
    }
    return NewFile(descriptor);
}

NewFile::NewFile(NewFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

NewFile& NewFile::operator=(NewFile&& other) noexcept {
    if (this != &other) {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

NewFile::~NewFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

std::expected<void, int> NewFile::write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return std::unexpected(errno);
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return {};
}

std::expected<std::int64_t, int> NewFile::seek(std::int64_t offset, int whence) {
    off_t position = ::lseek(descriptor_, offset, whence);
    if (position < 0) {
        return std::unexpected(errno);
    }
    return position;
}

std::expected<void, int> NewFile::sync() {
    if (::fsync(descriptor_) != 0) {
        return std::unexpected(errno);
    }
    return {};
}

std::expected<void, int> NewFile::removeOwn(const std::string& path, std::uint64_t device,
                                            std::uint64_t inode) {
    struct stat status{};
    if (::lstat(path.c_str(), &status) != 0) {
        return std::unexpected(errno);
    }
    if (!S_ISREG(status.st_mode) || status.st_dev != device || status.st_ino != inode) {
        return std::unexpected(ESTALE);
    }
    if (::unlink(path.c_str()) != 0) {
        return std::unexpected(errno);
    }
    return {};
}

std::expected<void, int> NewFile::setModified(const std::string& path, std::int64_t seconds,
                                              std::int64_t nanoseconds) {
    const struct timespec times[2] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT},
                                      {.tv_sec = seconds, .tv_nsec = nanoseconds}};
    if (::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::unexpected(errno);
    }
    return {};
}

} // namespace brevant::platform
