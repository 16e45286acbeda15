#include "TagMarkRecord.hpp"

#include "engine/support/Json.hpp"

namespace brevant {

void to_json(nlohmann::ordered_json& j, const TagMarkItem& value) {
    j = {{"imageID", value.imageID},
         {"path", json::text(value.path)},
         {"taggedIDs", value.taggedIDs},
         {"tagID", value.tagID},
         {"tagCreated", value.tagCreated}};
}

void from_json(const nlohmann::ordered_json& j, TagMarkItem& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.path = json::getText(j, "path");
    value.taggedIDs = json::get<std::vector<std::int64_t>>(j, "taggedIDs");
    value.tagID = json::get<std::int64_t>(j, "tagID");
    value.tagCreated = json::get<bool>(j, "tagCreated");
}

} // namespace brevant
