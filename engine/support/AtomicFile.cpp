#include "AtomicFile.hpp"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace brevant {

namespace {

bool writeAll(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

void syncFolder(const std::string& folder) {
    int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

} // namespace

bool AtomicFile::write(const std::string& path, std::span<const std::uint8_t> bytes) {
    std::filesystem::path target(path);
    if (!target.has_filename()) {
        return false;
    }
    std::string folder = target.has_parent_path() ? target.parent_path().string() : ".";
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    std::string temporary = folder + "/." + target.filename().string() + ".XXXXXX";
    int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    bool written = writeAll(descriptor, bytes) && ::fsync(descriptor) == 0;
    written = (::close(descriptor) == 0) && written;
    if (!written || ::rename(temporary.c_str(), path.c_str()) != 0) {
        // Only our own temporary file, never anything that was there before.
        ::unlink(temporary.c_str());
        return false;
    }
    syncFolder(folder);
    return true;
}

std::optional<std::vector<std::uint8_t>> AtomicFile::read(const std::string& path) {
    // Non-blocking so that a FIFO put in the file's place cannot hang the
    // open; reads of a regular file are unaffected.
    int descriptor = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return std::nullopt;
    }
    std::optional<std::vector<std::uint8_t>> contents;
    struct stat status{};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(status.st_size));
        std::size_t filled = 0;
        bool failed = false;
        while (filled < bytes.size()) {
            ssize_t got = ::read(descriptor, bytes.data() + filled, bytes.size() - filled);
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got <= 0) {
                failed = got < 0;
                break;
            }
            filled += static_cast<std::size_t>(got);
        }
        if (!failed) {
            bytes.resize(filled);
            contents = std::move(bytes);
        }
    }
    ::close(descriptor);
    return contents;
}

} // namespace brevant
