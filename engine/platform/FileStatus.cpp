#include "FileStatus.hpp"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevant::platform {

namespace {

FileStatus statusFrom(const struct stat& status) {
    FileStatus file;
    file.device = static_cast<std::uint64_t>(status.st_dev);
    file.inode = static_cast<std::uint64_t>(status.st_ino);
    file.size = static_cast<std::int64_t>(status.st_size);
    file.modifiedSeconds = static_cast<std::int64_t>(status.st_mtim.tv_sec);
    file.modifiedNanoseconds = static_cast<std::int64_t>(status.st_mtim.tv_nsec);
    file.linkCount = static_cast<std::uint32_t>(status.st_nlink);
    file.isRegularFile = S_ISREG(status.st_mode);
    file.isSymbolicLink = S_ISLNK(status.st_mode);
    return file;
}

} // namespace

std::optional<FileStatus> statusOfPath(const std::string& path) {
    struct stat status{};
    if (::lstat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return statusFrom(status);
}

std::optional<unsigned> permissionBitsOf(const std::string& path) {
    struct stat status{};
    if (::lstat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return static_cast<unsigned>(status.st_mode & 0777);
}

int statusErrorOf(const std::string& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0 ? 0 : errno;
}

std::optional<FileStatus> statusOfOpenFile(int descriptor) {
    struct stat status{};
    if (::fstat(descriptor, &status) != 0) {
        return std::nullopt;
    }
    return statusFrom(status);
}

std::optional<std::string> realPath(const std::string& path) {
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr) {
        return std::nullopt;
    }
    std::string result(resolved);
    std::free(resolved); // NOLINT(cppcoreguidelines-no-malloc): realpath allocates with malloc
    return result;
}

bool isDirectory(const std::string& path) {
    struct stat status{};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<std::string> readAccessError(const std::string& path) {
    if (::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0) {
        return std::nullopt;
    }
    return errorText(errno);
}

std::string errorText(int error) {
    return std::strerror(error); // NOLINT(concurrency-mt-unsafe): glibc's is thread-safe
}

} // namespace brevant::platform
