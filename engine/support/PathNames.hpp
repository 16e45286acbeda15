#pragma once

#include <string>
#include <string_view>

namespace brevant {

// Rules for absolute path strings that need nothing but the text.
// Comparisons are by exact bytes.
struct PathNames {
    // True when `path` is `folder` or lies below it; everything is inside "/".
    [[nodiscard]] static bool isInside(std::string_view path, std::string_view folder);

    [[nodiscard]] static std::string lastComponent(std::string_view path);
    [[nodiscard]] static std::string parentFolder(std::string_view path);
    // "/a/b//" is "/a/b"; "/" stays "/".
    [[nodiscard]] static std::string withoutTrailingSlashes(std::string path);
    // The text after the last "." of a name; a leading dot alone does not
    // start an extension (".profile" has none).
    [[nodiscard]] static std::string_view extension(std::string_view name);
    [[nodiscard]] static std::string_view deletingExtension(std::string_view name);
    [[nodiscard]] static std::string asciiLowercased(std::string_view text);
    [[nodiscard]] static std::string asciiUppercased(std::string_view text);
};

} // namespace brevant
