#pragma once

#include "engine/support/PathNames.hpp"

#include <string>
#include <string_view>

namespace brevant {

// Rules for absolute path strings: the name rules of PathNames, and those
// that ask the file system or the user's settings.
struct PathRules : PathNames {
    // The absolute, standardized form: relative paths are taken from the
    // current folder, a leading "~" is the home folder, "." and ".." parts are
    // folded and there is no trailing "/" (except for "/" itself).
    [[nodiscard]] static std::string standardized(std::string_view path);

    // True when no folder on the way to the path is a symbolic link.
    [[nodiscard]] static bool parentHasNoLinks(const std::string& path);

    // Unicode lowercasing for names that are valid UTF-8, ASCII otherwise.
    [[nodiscard]] static std::string lowercased(std::string_view text);
};

} // namespace brevant
