#include "FileLock.hpp"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace brevant::platform {

namespace {

constexpr mode_t kLockFileMode = 0600;
constexpr auto kPollInterval = std::chrono::milliseconds(100);

int openForLocking(const std::string& path, bool create) {
    int flags = O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
    if (create) {
        flags |= O_CREAT;
    }
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), flags, kLockFileMode);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        return -1;
    }
    struct stat status{};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        int error = errno != 0 ? errno : EINVAL;
        ::close(descriptor);
        errno = S_ISREG(status.st_mode) ? error : EINVAL;
        return -1;
    }
    return descriptor;
}

int flockRetrying(int descriptor, int operation) {
    int result = -1;
    do {
        result = ::flock(descriptor, operation);
    } while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}

} // namespace

std::expected<FileLock, int> FileLock::tryTake(const std::string& path, bool create) {
    int descriptor = openForLocking(path, create);
    if (descriptor < 0) {
        return std::unexpected(errno);
    }
    if (int error = flockRetrying(descriptor, LOCK_EX | LOCK_NB); error != 0) {
        ::close(descriptor);
        return std::unexpected(error == EAGAIN ? EWOULDBLOCK : error);
    }
    return FileLock(descriptor);
}

std::expected<FileLock, int> FileLock::take(const std::string& path, bool create,
                                            const KeepWaiting& keepWaiting) {
    for (;;) {
        auto taken = tryTake(path, create);
        if (taken || taken.error() != EWOULDBLOCK) {
            return taken;
        }
        if (keepWaiting && !keepWaiting()) {
            return std::unexpected(EINTR);
        }
        std::this_thread::sleep_for(kPollInterval);
    }
}

bool FileLock::isHeld(const std::string& path) {
    int descriptor = openForLocking(path, false);
    if (descriptor < 0) {
        return false;
    }
    int error = flockRetrying(descriptor, LOCK_SH | LOCK_NB);
    ::close(descriptor);
    return error == EWOULDBLOCK || error == EAGAIN;
}

std::optional<int> FileLock::holderOf(const std::string& path) {
    struct stat status{};
    if (::stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    // Lines such as "1: FLOCK  ADVISORY  WRITE 4321 fd:01:1234567 0 EOF";
    // lines of waiters start "1: -> FLOCK".
    std::ifstream locks("/proc/locks");
    std::string line;
    while (std::getline(locks, line)) {
        std::istringstream fields(line);
        std::string number, type, advisory, access, device;
        long pid = 0;
        if (!(fields >> number >> type >> advisory >> access >> pid >> device) || type != "FLOCK") {
            continue;
        }
        unsigned major = 0;
        unsigned minor = 0;
        unsigned long long inode = 0;
        if (std::sscanf(device.c_str(), "%x:%x:%llu", &major, &minor, &inode) == 3 &&
            inode == status.st_ino && ::makedev(major, minor) == status.st_dev && pid > 0) {
            return static_cast<int>(pid);
        }
    }
    return std::nullopt;
}

FileLock::FileLock(FileLock&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

FileLock::~FileLock() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

std::optional<std::string> commandLineOf(int processID) {
    std::ifstream file("/proc/" + std::to_string(processID) + "/cmdline", std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    while (!bytes.empty() && bytes.back() == '\0') {
        bytes.pop_back();
    }
    if (bytes.empty()) {
        return std::nullopt;
    }
    for (char& c : bytes) {
        if (c == '\0') {
            c = ' ';
        }
    }
    return bytes;
}

} // namespace brevant::platform
