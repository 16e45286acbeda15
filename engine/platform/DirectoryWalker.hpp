#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace brevant::platform {

// A depth-first walk of one folder tree that never follows a symbolic link,
// with each folder's entries in byte order of their names (fts(3), physical,
// no chdir so it is safe beside other threads).
class DirectoryWalker {
public:
    enum class Kind {
        directory, // before its contents
        regularFile,
        symbolicLink,
        special,             // FIFO, socket, device
        noStatus,            // the entry vanished or could not be examined
        unreadableDirectory, // could not be listed; `error` says why
    };

    struct Entry {
        std::string path;
        std::string_view name;
        Kind kind = Kind::regularFile;
        int level = 0; // 0 is the root itself
        int error = 0;
    };

    // Nothing when the walk cannot even start; `error` then holds errno.
    [[nodiscard]] static std::unique_ptr<DirectoryWalker> open(const std::string& root, int& error);

    DirectoryWalker(const DirectoryWalker&) = delete;
    DirectoryWalker& operator=(const DirectoryWalker&) = delete;
    DirectoryWalker(DirectoryWalker&&) = delete;
    DirectoryWalker& operator=(DirectoryWalker&&) = delete;
    ~DirectoryWalker();

    // The next entry, or nothing at the end. A failure of the walk itself
    // ends it with `failed()` set.
    [[nodiscard]] std::optional<Entry> next();

    // Do not enter the folder last returned.
    void skipContents();

    [[nodiscard]] int failed() const { return failure_; }

private:
    struct Handle;
    explicit DirectoryWalker(std::unique_ptr<Handle> handle);

    std::unique_ptr<Handle> handle_;
    int failure_ = 0;
};

} // namespace brevant::platform
