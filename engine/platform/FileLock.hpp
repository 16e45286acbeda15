#pragma once

#include <chrono>
#include <expected>
#include <functional>
#include <optional>
#include <string>

namespace brevant::platform {

// An exclusive flock(2) on one file, held while the object lives and given up
// by the kernel when the process ends, however it ends: a lock left by a
// crash never blocks the next run. Errors are errno values; EWOULDBLOCK means
// another open file holds the lock.
class FileLock {
public:
    // Called while waiting, about ten times a second; false stops the wait
    // (EINTR).
    using KeepWaiting = std::function<bool()>;

    // Opens the file read-only without following a final link, creating it
    // (mode 0600, empty) when `create` says so, and locks it without waiting.
    [[nodiscard]] static std::expected<FileLock, int> tryTake(const std::string& path, bool create);
    // The same, but waits while another holds the lock and `keepWaiting`
    // says so.
    [[nodiscard]] static std::expected<FileLock, int> take(const std::string& path, bool create,
                                                           const KeepWaiting& keepWaiting);

    // True while some open file holds an exclusive lock on the file; only
    // looks (a shared lock taken and given back at once).
    [[nodiscard]] static bool isHeld(const std::string& path);

    // The process holding an flock on the file, from /proc/locks; nothing
    // when it cannot be told.
    [[nodiscard]] static std::optional<int> holderOf(const std::string& path);

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    ~FileLock();

private:
    explicit FileLock(int descriptor)
        : descriptor_(descriptor) {}

    int descriptor_ = -1;
};

// The command line of a running process, its words joined by spaces;
// nothing when the process is gone or cannot be read.
[[nodiscard]] std::optional<std::string> commandLineOf(int processID);

} // namespace brevant::platform
