#include "ProcessInfo.hpp"

#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace brevant::platform {

std::string homeFolder() {
    long suggested = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(suggested > 0 ? static_cast<std::size_t>(suggested) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr) {
        return found->pw_dir;
    }
    const char* home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe)
    return home != nullptr ? home : "/";
}

std::string currentDirectory() {
    std::vector<char> buffer(PATH_MAX);
    if (::getcwd(buffer.data(), buffer.size()) == nullptr) {
        return "/";
    }
    return buffer.data();
}

} // namespace brevant::platform
