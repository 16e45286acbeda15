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

bool PathRules::isInside(std::string_view path, std::string_view folder) {
    if (folder == "/") {
        return path.starts_with('/');
    }
    if (path == folder) {
        return true;
    }
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

bool PathRules::parentHasNoLinks(const std::string& path) {
    std::string parent = parentFolder(path);
    auto real = platform::realPath(parent);
    return real && *real == parent;
}

std::string PathRules::lastComponent(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    auto slash = path.rfind('/');
    if (slash == std::string_view::npos || path == "/") {
        return std::string(path);
    }
    return std::string(path.substr(slash + 1));
}

std::string PathRules::parentFolder(std::string_view path) {
    auto slash = path.rfind('/');
    if (slash == std::string_view::npos) {
        return "";
    }
    if (slash == 0) {
        return "/";
    }
    return std::string(path.substr(0, slash));
}

std::string_view PathRules::extension(std::string_view name) {
    auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return {};
    }
    return name.substr(dot + 1);
}

std::string_view PathRules::deletingExtension(std::string_view name) {
    auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return name;
    }
    return name.substr(0, dot);
}

std::string PathRules::asciiLowercased(std::string_view text) {
    std::string out(text);
    std::ranges::transform(out, out.begin(), [](char c) {
        return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return out;
}

std::string PathRules::asciiUppercased(std::string_view text) {
    std::string out(text);
    std::ranges::transform(out, out.begin(), [](char c) {
        return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return out;
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
