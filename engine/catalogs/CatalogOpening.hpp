#pragma once

#include "engine/catalogs/CatalogLayout.hpp"
#include "engine/catalogs/CatalogReadError.hpp"
#include "engine/catalogs/SQLiteReader.hpp"
#include "engine/scan/CatalogApplication.hpp"

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// The steps every catalog reader starts with: the database opened read-only
// with its application's busy sentence, its tables checked for the columns
// that are read, and its version read. Only then are photos read.
struct CatalogOpening {
    SQLiteReader reader;
    CatalogLayout::Columns columns;
    std::string version;

    [[nodiscard]] static std::expected<CatalogOpening, CatalogReadError>
    open(const std::string& path, CatalogApplication application,
         const std::vector<CatalogLayout::Table>& required, const std::string& versionQuery);

    // The first column of the query's first row: a text as it stands, a
    // whole number written out; "unknown" when there is no row, no value or a
    // fraction.
    [[nodiscard]] static std::expected<std::string, CatalogReadError>
    readVersion(const SQLiteReader& reader, const std::string& query);

    // Every row made a photo by `places`, in row order, and the folders
    // met on the way.
    template <class Catalog, class Places>
    static void placeRows(Catalog& catalog, const std::vector<SQLiteRow>& rows, Places& places) {
        catalog.photos.reserve(rows.size());
        for (const auto& row : rows) {
            catalog.photos.push_back(places.place(row));
        }
        catalog.rootFolders = places.takeRootFolders();
    }

    static constexpr std::string_view kUnknownVersion = "unknown";
};

} // namespace brevant
