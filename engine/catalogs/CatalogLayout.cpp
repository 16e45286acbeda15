#include "CatalogLayout.hpp"

#include <fmt/format.h>

namespace brevant {

std::expected<CatalogLayout::Columns, CatalogReadError>
CatalogLayout::check(const SQLiteReader& reader, const std::vector<Table>& required) {
    Columns found;
    for (const auto& table : required) {
        auto rows = reader.rows(fmt::format("PRAGMA table_info({})", table.name));
        if (!rows) {
            return std::unexpected(rows.error());
        }
        std::set<std::string> names;
        for (const auto& row : *rows) {
            names.insert(SQLiteValues::text(SQLiteValues::column(row, 1)));
        }
        if (names.empty()) {
            return std::unexpected(
                CatalogReadError::unknownLayout(fmt::format("no {}", table.name)));
        }
        for (auto column : table.columns) {
            if (!names.contains(std::string(column))) {
                return std::unexpected(
                    CatalogReadError::unknownLayout(fmt::format("{}.{}", table.name, column)));
            }
        }
        found.emplace(std::string(table.name), std::move(names));
    }
    return found;
}

} // namespace brevant
