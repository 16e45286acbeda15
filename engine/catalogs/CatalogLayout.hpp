#pragma once

#include "engine/catalogs/CatalogReadError.hpp"
#include "engine/catalogs/SQLiteReader.hpp"

#include <expected>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// The tables and columns a catalog must have before anything else is read
// from it. The schema belongs to the catalog's application; checking first
// means a catalog of a layout we do not know is left alone as a whole.
struct CatalogLayout {
    struct Table {
        std::string_view name;
        std::vector<std::string_view> columns;
    };

    // Every column of every table, by table name.
    using Columns = std::map<std::string, std::set<std::string>, std::less<>>;

    // Checks the tables in the order given, each by "PRAGMA table_info": a
    // table with no columns fails with "no " + table, a missing column with
    // table + "." + column. The first problem ends the check.
    [[nodiscard]] static std::expected<Columns, CatalogReadError>
    check(const SQLiteReader& reader, const std::vector<Table>& required);
};

} // namespace brevant
