#include "StoredDocument.hpp"

#include "engine/platform/ExclusiveRename.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/AtomicFile.hpp"

#include <fmt/format.h>

namespace brevant {

std::expected<std::optional<std::string>, std::string>
StoredDocument::read(const std::string& path) {
    auto status = FileSnapshot::read(path);
    if (!status) {
        return std::nullopt;
    }
    if (status->isSymbolicLink) {
        return std::unexpected(std::string("it is a symbolic link, which is never followed"));
    }
    if (!status->isRegularFile) {
        return std::unexpected(std::string("it is not a file"));
    }
    if (auto denied = platform::readAccessError(path)) {
        return std::unexpected(*denied);
    }
    auto bytes = AtomicFile::read(path);
    if (!bytes) {
        return std::unexpected(std::string("it could not be read"));
    }
    return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

bool StoredDocument::write(const std::string& path, const std::string& text) {
    return AtomicFile::write(path,
                             {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::expected<std::string, std::string> StoredDocument::setAside(const std::string& path,
                                                                 std::int64_t unixSeconds) {
    std::string aside = fmt::format("{}.damaged-{}", path, unixSeconds);
    if (auto moved = platform::renameNoReplace(path, aside); !moved) {
        return std::unexpected(fmt::format("{} ({})", aside, platform::errorText(moved.error())));
    }
    return aside;
}

} // namespace brevant
