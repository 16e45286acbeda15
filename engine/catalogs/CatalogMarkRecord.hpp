#pragma once

#include "engine/catalogs/MarkRecordFiles.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"
#include "engine/support/Uuid.hpp"

#include <exception>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// What one marking did to a catalog, written down so that it can be undone:
// the same for every kind of catalog but for `Item`, what the kind changed
// of one photo and what it held before.
template <class ItemType> struct CatalogMarkRecord {
    using Item = ItemType;

    Uuid id;
    // The approved cleanup plan that was carried out.
    Uuid planID;
    std::string catalogPath;
    std::string backupPath;
    // Stored to the second.
    Date date;
    std::vector<Item> marked;
    bool restored = false;

    // Pretty printed, keys sorted, dates in ISO 8601.
    [[nodiscard]] std::string encoded() const {
        return MarkRecordFiles::sortedText(json::Json(*this));
    }

    [[nodiscard]] static std::expected<CatalogMarkRecord, std::string>
    decode(std::string_view document) {
        try {
            return json::parse(document).get<CatalogMarkRecord>();
        } catch (const std::exception& error) {
            return std::unexpected(std::string(error.what()));
        }
    }

    friend bool operator==(const CatalogMarkRecord&, const CatalogMarkRecord&) = default;
};

template <class Item>
void to_json(nlohmann::ordered_json& j, const CatalogMarkRecord<Item>& value) {
    j = {{"id", value.id},
         {"planID", value.planID},
         {"catalogPath", json::text(value.catalogPath)},
         {"backupPath", json::text(value.backupPath)},
         {"date", json::isoDate(value.date)},
         {"marked", value.marked},
         {"restored", value.restored}};
}

template <class Item>
void from_json(const nlohmann::ordered_json& j, CatalogMarkRecord<Item>& value) {
    value.id = json::get<Uuid>(j, "id");
    value.planID = json::get<Uuid>(j, "planID");
    value.catalogPath = json::getText(j, "catalogPath");
    value.backupPath = json::getText(j, "backupPath");
    value.date = json::getIsoDate(j, "date");
    value.marked = json::get<std::vector<Item>>(j, "marked");
    value.restored = json::get<bool>(j, "restored");
}

} // namespace brevant
