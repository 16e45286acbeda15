#include "LightroomMarkRecord.hpp"

#include "engine/catalogs/MarkRecordFiles.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"

namespace brevant {

std::string LightroomMarkRecord::encoded() const {
    return MarkRecordFiles::sortedText(json::Json(*this));
}

std::expected<LightroomMarkRecord, std::string>
LightroomMarkRecord::decode(std::string_view document) {
    try {
        return json::parse(document).get<LightroomMarkRecord>();
    } catch (const std::exception& error) {
        return std::unexpected(std::string(error.what()));
    }
}

void to_json(nlohmann::ordered_json& j, const LightroomMarkRecord::Item& value) {
    j = {{"imageID", value.imageID},
         {"path", json::text(value.path)},
         {"previousPick", value.previousPick}};
}

void from_json(const nlohmann::ordered_json& j, LightroomMarkRecord::Item& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.path = json::getText(j, "path");
    value.previousPick = json::get<int>(j, "previousPick");
}

void to_json(nlohmann::ordered_json& j, const LightroomMarkRecord& value) {
    j = {{"id", value.id},
         {"planID", value.planID},
         {"catalogPath", json::text(value.catalogPath)},
         {"backupPath", json::text(value.backupPath)},
         {"date", json::isoDate(value.date)},
         {"marked", value.marked},
         {"restored", value.restored}};
}

void from_json(const nlohmann::ordered_json& j, LightroomMarkRecord& value) {
    value.id = json::get<Uuid>(j, "id");
    value.planID = json::get<Uuid>(j, "planID");
    value.catalogPath = json::getText(j, "catalogPath");
    value.backupPath = json::getText(j, "backupPath");
    value.date = json::getIsoDate(j, "date");
    value.marked = json::get<std::vector<LightroomMarkRecord::Item>>(j, "marked");
    value.restored = json::get<bool>(j, "restored");
}

} // namespace brevant
