#include "Trasher.hpp"

#include "engine/platform/FileStatus.hpp"
#include "engine/platform/FreedesktopTrash.hpp"

#include <cerrno>
#include <ostream>

namespace brevant {

TrashError TrashError::fromErrno(int code) {
    return TrashError{.code = code, .description = platform::errorText(code)};
}

void PrintTo(const TrashError& error, std::ostream* out) {
    *out << "TrashError{" << error.code << ", \"" << error.description << "\"}";
}

std::expected<std::string, TrashError> Trasher::trash(const std::string& path) const {
    // A name is only taken meanwhile by another program trashing an item
    // of the same name; a few tries settle it.
    constexpr int kAttempts = 16;
    for (int attempt = 1;; ++attempt) {
        auto reserved = reserve(path);
        if (!reserved) {
            return std::unexpected(reserved.error());
        }
        auto moved = moveInto(path, *reserved);
        if (moved) {
            return *reserved;
        }
        if (moved.error().code != EEXIST || attempt == kAttempts) {
            return std::unexpected(moved.error());
        }
    }
}

std::expected<std::string, TrashError> FileManagerTrasher::reserve(const std::string& path) const {
    auto reserved = platform::FreedesktopTrash::reserve(path);
    if (!reserved) {
        return std::unexpected(TrashError::fromErrno(reserved.error()));
    }
    return std::move(*reserved);
}

std::expected<void, TrashError> FileManagerTrasher::moveInto(const std::string& path,
                                                             const std::string& trashPath) const {
    if (auto moved = platform::FreedesktopTrash::moveInto(path, trashPath); !moved) {
        return std::unexpected(TrashError::fromErrno(moved.error()));
    }
    return {};
}

std::expected<void, TrashError> FileManagerTrasher::putBack(const std::string& trashPath,
                                                            const std::string& destination) const {
    if (auto moved = platform::FreedesktopTrash::putBack(trashPath, destination); !moved) {
        return std::unexpected(TrashError::fromErrno(moved.error()));
    }
    return {};
}

} // namespace brevant
