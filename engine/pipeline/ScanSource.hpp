#pragma once

#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brevant {

// Where a scan finds its pictures: folders the user chose, or one photo
// catalog whose files are compared among themselves (CatalogSource tells
// which application keeps it).
struct ScanSource {
    enum class Kind {
        folders,
        catalog,
    };

    Kind kind = Kind::folders;
    std::vector<std::string> folders;
    // The catalog file or package; empty for folders.
    std::string catalog;

    [[nodiscard]] static ScanSource ofFolders(std::vector<std::string> folders) {
        return {.kind = Kind::folders, .folders = std::move(folders)};
    }

    [[nodiscard]] static ScanSource ofCatalog(std::string catalog) {
        return {.kind = Kind::catalog, .catalog = std::move(catalog)};
    }

    friend bool operator==(const ScanSource&, const ScanSource&) = default;
};

template <> struct EnumCases<ScanSource::Kind> {
    using Kind = ScanSource::Kind;
    static constexpr std::array kAll{Kind::folders, Kind::catalog};
};

[[nodiscard]] std::string_view rawValue(ScanSource::Kind kind);
void PrintTo(ScanSource::Kind kind, std::ostream* os);

} // namespace brevant
