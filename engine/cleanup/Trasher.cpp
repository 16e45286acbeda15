#include "Trasher.hpp"

#include "engine/platform/FileStatus.hpp"
#include "engine/platform/FreedesktopTrash.hpp"

#include <ostream>

namespace brevant {

TrashError TrashError::fromErrno(int code) {
    return TrashError{.code = code, .description = platform::errorText(code)};
}

void PrintTo(const TrashError& error, std::ostream* out) {
    *out << "TrashError{" << error.code << ", \"" << error.description << "\"}";
}

std::expected<std::optional<std::string>, TrashError>
FileManagerTrasher::trash(const std::string& path) const {
    auto moved = platform::FreedesktopTrash::moveToTrash(path);
    if (!moved) {
        return std::unexpected(TrashError::fromErrno(moved.error()));
    }
    return std::optional<std::string>(std::move(*moved));
}

} // namespace brevant
