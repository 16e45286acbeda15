#include "CaptureOneMarkRecord.hpp"

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

void to_json(nlohmann::ordered_json& j, const CaptureOneMarkItem& value) {
    j = {{"imageID", value.imageID},
         {"variantID", value.variantID},
         {"path", json::text(value.path)},
         {"metadataIDs", value.metadataIDs},
         {"previousTags", tagList(value.previousTags)}};
    json::putOptional(j, "previousModified", value.previousModified);
}

void from_json(const nlohmann::ordered_json& j, CaptureOneMarkItem& value) {
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

} // namespace brevant
