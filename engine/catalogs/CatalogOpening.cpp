#include "CatalogOpening.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"

namespace brevant {

std::expected<CatalogOpening, CatalogReadError>
CatalogOpening::open(const std::string& path, CatalogApplication application,
                     const std::vector<CatalogLayout::Table>& required,
                     const std::string& versionQuery) {
    auto reader =
        SQLiteReader::open(path, std::nullopt, CatalogKindTexts::of(application).busyText());
    if (!reader) {
        return std::unexpected(reader.error());
    }
    auto columns = CatalogLayout::check(*reader, required);
    if (!columns) {
        return std::unexpected(columns.error());
    }
    auto version = readVersion(*reader, versionQuery);
    if (!version) {
        return std::unexpected(version.error());
    }
    return CatalogOpening{std::move(*reader), std::move(*columns), std::move(*version)};
}

std::expected<std::string, CatalogReadError> CatalogOpening::readVersion(const SQLiteReader& reader,
                                                                         const std::string& query) {
    auto rows = reader.rows(query);
    if (!rows) {
        return std::unexpected(rows.error());
    }
    if (rows->empty() || rows->front().empty()) {
        return std::string(kUnknownVersion);
    }
    const std::optional<SQLiteValue>& first = rows->front().front();
    if (!first) {
        return std::string(kUnknownVersion);
    }
    const auto& value = *first;
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        return std::to_string(*number);
    }
    const auto* text = std::get_if<std::string>(&value);
    // A fraction is no version number any of the applications writes.
    if (text == nullptr || text->empty()) {
        return std::string(kUnknownVersion);
    }
    return *text;
}

} // namespace brevant
