#include "ExclusiveRename.hpp"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace brevant::platform {

std::expected<void, int> renameNoReplace(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0) {
        return std::unexpected(errno);
    }
    return {};
}

} // namespace brevant::platform
