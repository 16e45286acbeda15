#include "PathNames.hpp"

#include <algorithm>

namespace brevant {

bool PathNames::isInside(std::string_view path, std::string_view folder) {
    if (folder == "/") {
        return path.starts_with('/');
    }
    if (path == folder) {
        return true;
    }
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::string PathNames::lastComponent(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    auto slash = path.rfind('/');
    if (slash == std::string_view::npos || path == "/") {
        return std::string(path);
    }
    return std::string(path.substr(slash + 1));
}

std::string PathNames::parentFolder(std::string_view path) {
    auto slash = path.rfind('/');
    if (slash == std::string_view::npos) {
        return "";
    }
    if (slash == 0) {
        return "/";
    }
    return std::string(path.substr(0, slash));
}

std::string PathNames::withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

std::string_view PathNames::extension(std::string_view name) {
    auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return {};
    }
    return name.substr(dot + 1);
}

std::string_view PathNames::deletingExtension(std::string_view name) {
    auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return name;
    }
    return name.substr(0, dot);
}

std::string PathNames::asciiLowercased(std::string_view text) {
    std::string out(text);
    std::ranges::transform(out, out.begin(), [](char c) {
        return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return out;
}

std::string PathNames::asciiUppercased(std::string_view text) {
    std::string out(text);
    std::ranges::transform(out, out.begin(), [](char c) {
        return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return out;
}

} // namespace brevant
