#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace brevant::platform {

// The two system calls an appended record is made of. The system's are used
// unless a test puts its own in place with ScopedFileWriteCalls, to count
// the synchronisations or to make a write fail. Errors are errno values.
class FileWriteCalls {
public:
    FileWriteCalls() = default;
    FileWriteCalls(const FileWriteCalls&) = delete;
    FileWriteCalls& operator=(const FileWriteCalls&) = delete;
    FileWriteCalls(FileWriteCalls&&) = delete;
    FileWriteCalls& operator=(FileWriteCalls&&) = delete;
    virtual ~FileWriteCalls() = default;

    // One write(2); the count of bytes it took.
    [[nodiscard]] virtual std::expected<std::size_t, int> write(int descriptor,
                                                                std::string_view bytes) = 0;
    // fsync(2).
    [[nodiscard]] virtual std::expected<void, int> sync(int descriptor) = 0;
};

// The real calls, for fakes that pass through to them.
[[nodiscard]] FileWriteCalls& systemWriteCalls();

// Puts `calls` in place for the current thread while it lives.
class ScopedFileWriteCalls {
public:
    explicit ScopedFileWriteCalls(FileWriteCalls& calls);
    ScopedFileWriteCalls(const ScopedFileWriteCalls&) = delete;
    ScopedFileWriteCalls& operator=(const ScopedFileWriteCalls&) = delete;
    ScopedFileWriteCalls(ScopedFileWriteCalls&&) = delete;
    ScopedFileWriteCalls& operator=(ScopedFileWriteCalls&&) = delete;
    ~ScopedFileWriteCalls();

private:
    FileWriteCalls* previous_;
};

// A file that is only ever added to: every append goes to the end (O_APPEND)
// in one write call and is forced to the storage device before it returns.
// Never opened through a final symbolic link. Closed when the handle goes.
class AppendOnlyFile {
public:
    // Creates the file, which must not exist yet, write-only, with the
    // permission bits given; the folder's entry is synchronised too.
    [[nodiscard]] static std::expected<AppendOnlyFile, int> create(const std::string& path,
                                                                   mode_t permissions);

    // Opens an existing regular file for appending (and for reading its
    // last byte).
    [[nodiscard]] static std::expected<AppendOnlyFile, int> open(const std::string& path);

    AppendOnlyFile(const AppendOnlyFile&) = delete;
    AppendOnlyFile& operator=(const AppendOnlyFile&) = delete;
    AppendOnlyFile(AppendOnlyFile&& other) noexcept;
    AppendOnlyFile& operator=(AppendOnlyFile&& other) noexcept;
    ~AppendOnlyFile();

    // One write of all the bytes, then fsync. A write that takes only part
    // of the bytes fails with EIO: what it left is a torn record.
    [[nodiscard]] std::expected<void, int> append(std::string_view bytes);

    // The last append's write took only part of its bytes.
    [[nodiscard]] bool lastAppendCutShort() const { return cutShort_; }

    // Takes an exclusive flock on the file, held until the handle closes, so
    // that others can tell a file still being written from one left behind.
    // Without `wait`, EWOULDBLOCK when another holds it.
    [[nodiscard]] std::expected<void, int> lock(bool wait);

    // True when the file is not empty and its last byte is not a line feed:
    // its last line was cut short.
    [[nodiscard]] std::expected<bool, int> endsMidLine() const;

private:
    explicit AppendOnlyFile(int descriptor)
        : descriptor_(descriptor) {}

    int descriptor_ = -1;
    bool cutShort_ = false;
};

} // namespace brevant::platform
