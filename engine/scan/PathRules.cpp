#include "PathRules.hpp"

#include "engine/platform/FileStatus.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/support/PathText.hpp"

#include <algorithm>
#include <filesystem>
#include <glib.h>

namespace brevant {

std::string PathRules::standardized(std::string_view path) {
    std::string text(path);
    if (text == "~" || text.starts_with("~/")) {
        text = platform::homeFolder() + text.substr(1);
    }
    if (!text.starts_with('/')) {
        text = platform::currentDirectory() + "/" + text;
    }
    std::string normal = std::filesystem::path(text).lexically_normal().string();
    while (normal.size() > 1 && normal.ends_with('/')) {
        normal.pop_back();
    }
    return normal.empty() ? "/" : normal;
}

bool PathRules::parentHasNoLinks(const std::string& path) {
    std::string parent = parentFolder(path);
    auto real = platform::realPath(parent);
    return real && *real == parent;
}

std::string PathRules::lowercased(std::string_view text) {
    bool ascii = std::ranges::all_of(text, [](char c) { return (c & 0x80) == 0; });
    if (ascii || !path_text::isValidUtf8(text)) {
        return asciiLowercased(text);
    }
    gchar* lower = g_utf8_strdown(text.data(), static_cast<gssize>(text.size()));
    std::string out(lower);
    g_free(lower);
    return out;
}

} // namespace brevant
