#include "CatalogChoice.hpp"

#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PathRules.hpp"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <limits>

namespace brevant {

namespace {

struct Entry {
    std::string path;
    std::string name;
    double modified = -std::numeric_limits<double>::infinity();
};

} // namespace

std::vector<std::string> CatalogChoice::catalogsIn(const std::string& folder,
                                                   std::string_view extension, bool wantFolders) {
    namespace fs = std::filesystem;
    std::vector<Entry> entries;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        std::string name = it->path().filename().string();
        if (PathRules::asciiLowercased(PathRules::extension(name)) != extension) {
            continue;
        }
        std::error_code typeError;
        auto type = it->symlink_status(typeError).type();
        if (type != (wantFolders ? fs::file_type::directory : fs::file_type::regular)) {
            continue;
        }
        std::string path = it->path().string();
        Entry entry{path, name};
        if (auto status = FileSnapshot::read(path)) {
            entry.modified = status->modified().secondsSinceReferenceDate;
        }
        entries.push_back(std::move(entry));
    }
    std::ranges::sort(entries, [](const Entry& a, const Entry& b) {
        if (a.modified != b.modified) {
            return a.modified > b.modified;
        }
        return a.name < b.name;
    });
    std::vector<std::string> paths;
    paths.reserve(entries.size());
    for (auto& entry : entries) {
        paths.push_back(std::move(entry.path));
    }
    return paths;
}

CatalogChoice CatalogChoice::choose(const std::vector<std::string>& catalogs,
                                    std::string noneSentence) {
    if (catalogs.empty()) {
        return {std::nullopt, std::move(noneSentence)};
    }
    CatalogChoice choice{catalogs.front(), std::nullopt};
    if (catalogs.size() > 1) {
        choice.notice =
            severalSentence(catalogs.size(), PathRules::lastComponent(catalogs.front()));
    }
    return choice;
}

std::string CatalogChoice::severalSentence(std::size_t count, std::string_view name) {
    return fmt::format("This folder holds {} catalogs; using {}, the most recently changed.", count,
                       name);
}

} // namespace brevant
