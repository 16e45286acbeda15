#include "CaptureOneMarkRecord.hpp"

#include "engine/catalogs/MarkRecordFiles.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"

namespace brevant {

namespace {

// Absent values stay in the list as null, so that each tag keeps its row.
json::Json tagList(const std::vector<std::optional<int>>& tags) {
    json::Json list = json::Json::array();
    for (const auto& tag : tags) {
        list.push_back(tag ? json::Json(*tag) : json::Json());
    }
    return list;
}

std::vector<std::optional<int>> getTagList(const json::Json& j, std::string_view key) {
    std::vector<std::optional<int>> tags;
    for (const auto& tag : json::field(j, key)) {
        tags.push_back(tag.is_null() ? std::nullopt : std::optional(json::toInteger<int>(tag)));
    }
    return tags;
}

} // namespace

std::string CaptureOneMarkRecord::encoded() const {
    return MarkRecordFiles::sortedText(json::Json(*this));
}

std::expected<CaptureOneMarkRecord, std::string>
CaptureOneMarkRecord::decode(std::string_view document) {
    try {
        return json::parse(document).get<CaptureOneMarkRecord>();
    } catch (const std::exception& error) {
        return std::unexpected(std::string(error.what()));
    }
}

void to_json(nlohmann::ordered_json& j, const CaptureOneMarkRecord::Item& value) {
    j = {{"imageID", value.imageID},
         {"variantID", value.variantID},
         {"path", json::text(value.path)},
         {"metadataIDs", value.metadataIDs},
         {"previousTags", tagList(value.previousTags)}};
    json::putOptional(j, "previousModified", value.previousModified);
}

void from_json(const nlohmann::ordered_json& j, CaptureOneMarkRecord::Item& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.variantID = json::get<std::int64_t>(j, "variantID");
    value.path = json::getText(j, "path");
    value.metadataIDs.clear();
    for (const auto& id : json::field(j, "metadataIDs")) {
        value.metadataIDs.push_back(json::toInteger<std::int64_t>(id));
    }
    value.previousTags = getTagList(j, "previousTags");
    if (value.previousTags.size() != value.metadataIDs.size()) {
        throw json::DecodeError("a previous tag for each metadata row");
    }
    value.previousModified = json::has(j, "previousModified")
                                 ? std::optional(json::field(j, "previousModified").get<double>())
                                 : std::nullopt;
}

void to_json(nlohmann::ordered_json& j, const CaptureOneMarkRecord& value) {
    j = {{"id", value.id},
         {"planID", value.planID},
         {"catalogPath", json::text(value.catalogPath)},
         {"backupPath", json::text(value.backupPath)},
         {"date", json::isoDate(value.date)},
         {"marked", value.marked},
         {"restored", value.restored}};
}

void from_json(const nlohmann::ordered_json& j, CaptureOneMarkRecord& value) {
    value.id = json::get<Uuid>(j, "id");
    value.planID = json::get<Uuid>(j, "planID");
    value.catalogPath = json::getText(j, "catalogPath");
    value.backupPath = json::getText(j, "backupPath");
    value.date = json::getIsoDate(j, "date");
    value.marked = json::get<std::vector<CaptureOneMarkRecord::Item>>(j, "marked");
    value.restored = json::get<bool>(j, "restored");
}

} // namespace brevant
