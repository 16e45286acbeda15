#include "AppendOnlyFile.hpp"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace brevant::platform {

namespace {

class SystemWriteCalls final : public FileWriteCalls {
public:
    std::expected<std::size_t, int> write(int descriptor, std::string_view bytes) override {
        for (;;) {
            ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
            if (count >= 0) {
                return static_cast<std::size_t>(count);
            }
            if (errno != EINTR) {
                return std::unexpected(errno);
            }
        }
    }

    std::expected<void, int> sync(int descriptor) override {
        for (;;) {
            if (::fsync(descriptor) == 0) {
                return {};
            }
            if (errno != EINTR) {
                return std::unexpected(errno);
            }
        }
    }
};

thread_local FileWriteCalls* currentCalls = nullptr;

FileWriteCalls& calls() {
    return currentCalls != nullptr ? *currentCalls : systemWriteCalls();
}

int openRetrying(const std::string& path, int flags, mode_t permissions) {
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), flags, permissions);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

// So that the new name survives a crash as well as the file's contents.
void syncParentFolder(const std::string& path) {
    std::string folder = std::filesystem::path(path).parent_path().string();
    int descriptor =
        openRetrying(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

} // namespace

FileWriteCalls& systemWriteCalls() {
    static SystemWriteCalls system;
    return system;
}

ScopedFileWriteCalls::ScopedFileWriteCalls(FileWriteCalls& calls)
    : previous_(std::exchange(currentCalls, &calls)) {}

ScopedFileWriteCalls::~ScopedFileWriteCalls() {
    currentCalls = previous_;
}

std::expected<AppendOnlyFile, int> AppendOnlyFile::create(const std::string& path,
                                                          mode_t permissions) {
    int descriptor = openRetrying(
        path, O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, permissions);
    if (descriptor < 0) {
        return std::unexpected(errno);
    }
    // A strict umask may have taken the owner's own bits away; the file must
    // stay readable and appendable by its owner, and by nobody else.
    if (::fchmod(descriptor, permissions) != 0) {
        int error = errno;
        ::close(descriptor);
        return std::unexpected(error);
    }
    syncParentFolder(path);
    return AppendOnlyFile(descriptor);
}

std::expected<AppendOnlyFile, int> AppendOnlyFile::open(const std::string& path) {
    // Non-blocking so that a FIFO in the file's place cannot hang the open.
    int descriptor = openRetrying(path, O_RDWR | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0);
    if (descriptor < 0) {
        return std::unexpected(errno);
    }
    struct stat status{};
    int error = 0;
    if (::fstat(descriptor, &status) != 0) {
        error = errno;
    } else if (!S_ISREG(status.st_mode)) {
        error = EINVAL;
    }
    if (error != 0) {
        ::close(descriptor);
        return std::unexpected(error);
    }
    int flags = ::fcntl(descriptor, F_GETFL);
    if (flags >= 0) {
        ::fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK);
    }
    return AppendOnlyFile(descriptor);
}

AppendOnlyFile::AppendOnlyFile(AppendOnlyFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1))
    , cutShort_(other.cutShort_) {}

AppendOnlyFile& AppendOnlyFile::operator=(AppendOnlyFile&& other) noexcept {
    if (this != &other) {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        descriptor_ = std::exchange(other.descriptor_, -1);
        cutShort_ = other.cutShort_;
    }
    return *this;
}

AppendOnlyFile::~AppendOnlyFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

std::expected<void, int> AppendOnlyFile::append(std::string_view bytes) {
    auto written = calls().write(descriptor_, bytes);
    if (!written) {
        // A failed write(2) took nothing.
        return std::unexpected(written.error());
    }
    cutShort_ = *written != bytes.size();
    if (cutShort_) {
        return std::unexpected(EIO);
    }
    return calls().sync(descriptor_);
}

std::expected<void, int> AppendOnlyFile::lock(bool wait) {
    int operation = wait ? LOCK_EX : LOCK_EX | LOCK_NB;
    for (;;) {
        if (::flock(descriptor_, operation) == 0) {
            return {};
        }
        if (errno != EINTR) {
            return std::unexpected(errno == EAGAIN ? EWOULDBLOCK : errno);
        }
    }
}

std::expected<bool, int> AppendOnlyFile::endsMidLine() const {
    struct stat status{};
    if (::fstat(descriptor_, &status) != 0) {
        return std::unexpected(errno);
    }
    if (status.st_size == 0) {
        return false;
    }
    char byte = 0;
    ssize_t count = -1;
    do {
        count = ::pread(descriptor_, &byte, 1, status.st_size - 1);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        return std::unexpected(errno);
    }
    // Shortened since the fstat (count 0): nothing there to end.
    return count == 1 && byte != '\n';
}

} // namespace brevant::platform
