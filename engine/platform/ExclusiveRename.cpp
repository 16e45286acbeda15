#include "ExclusiveRename.hpp"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace brevant::platform {

int renameExclusive(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    return errno;
}

} // namespace brevant::platform
