#include "CatalogText.hpp"

#include "app/cli/ExitStatus.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/catalogs/CatalogRegistry.hpp"
#include "engine/catalogs/CatalogSource.hpp"
#include "engine/scan/PathRules.hpp"

#include <filesystem>
#include <fmt/format.h>

namespace brevant::cli::catalog_text {

const char* plural(std::size_t count, const char* one, const char* many) {
    return count == 1 ? one : many;
}

std::string absolute(const std::string& path) {
    std::error_code error;
    auto made = std::filesystem::absolute(path, error);
    return error ? path : made.lexically_normal().string();
}

std::string catalogArgument() {
    std::string files;
    std::string names;
    for (const auto& kind : catalogRegistrations()) {
        files += (files.empty() ? "" : ", ") + std::string(kind.fileName);
        names += (names.empty() ? "" : ", ") + PathRules::asciiLowercased(kind.texts->settingsKey);
    }
    return fmt::format("The catalog ({}), a folder holding one, or the application's name ({}) "
                       "for the one at its usual place",
                       files, names);
}

std::optional<std::string> located(const Environment& environment, const std::string& given) {
    auto choice = CatalogSource::locate(given, absolute(given));
    if (!choice) {
        fmt::print(environment.err, "brevant: {}: {}\n", given, choice.error());
        return std::nullopt;
    }
    if (choice->notice) {
        fmt::print(environment.err, "{}\n", *choice->notice);
    }
    return choice->catalog;
}

std::string counted(std::size_t count) {
    return fmt::format("{} {}", count, plural(count, "photo", "photos"));
}

int failed(const Environment& environment, std::string_view message) {
    fmt::print(environment.err, "brevant: {}\n", message);
    return ExitStatus::kFailed;
}

std::string work(const PhotoAsset& asset) {
    return asset.catalog ? asset.catalog->workDetails() : std::string();
}

std::string memberLine(const PhotoAsset& member, std::string_view home) {
    std::string line = "  " + shownPath(member.path, home);
    if (std::string done = work(member); !done.empty()) {
        line += fmt::format("   [{}]", done);
    }
    return line + "\n";
}

std::string groups(const std::vector<DuplicateGroup>& groups, std::string_view home) {
    std::string text;
    for (const auto& group : groups) {
        text += fmt::format("{}: {} photos\n", rawValue(group.kind), group.members.size());
        for (const auto& member : group.members) {
            text += memberLine(member, home);
        }
    }
    return text;
}

} // namespace brevant::cli::catalog_text
