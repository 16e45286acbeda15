#pragma once

#include <string>
#include <string_view>

namespace brevant {

// Rules for absolute path strings. Comparisons are by exact bytes.
struct PathRules {
    // The absolute, standardized form: relative paths are taken from the
    // current folder, a leading "~" is the home folder, "." and ".." parts are
    // folded and there is no trailing "/" (except for "/" itself).
    [[nodiscard]] static std::string standardized(std::string_view path);

    // True when `path` is `folder` or lies below it; everything is inside "/".
    [[nodiscard]] static bool isInside(std::string_view path, std::string_view folder);

    // True when no folder on the way to the path is a symbolic link.
    [[nodiscard]] static bool parentHasNoLinks(const std::string& path);

    [[nodiscard]] static std::string lastComponent(std::string_view path);
    [[nodiscard]] static std::string parentFolder(std::string_view path);
    // The text after the last "." of a name; a leading dot alone does not
    // start an extension (".profile" has none).
    [[nodiscard]] static std::string_view extension(std::string_view name);
    [[nodiscard]] static std::string_view deletingExtension(std::string_view name);
    [[nodiscard]] static std::string asciiLowercased(std::string_view text);
    [[nodiscard]] static std::string asciiUppercased(std::string_view text);
    // Unicode lowercasing for names that are valid UTF-8, ASCII otherwise.
    [[nodiscard]] static std::string lowercased(std::string_view text);
};

} // namespace brevant
