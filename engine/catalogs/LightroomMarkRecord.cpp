#include "LightroomMarkRecord.hpp"

#include "engine/support/Json.hpp"

namespace brevant {

void to_json(nlohmann::ordered_json& j, const LightroomMarkItem& value) {
    j = {{"imageID", value.imageID},
         {"path", json::text(value.path)},
         {"previousPick", value.previousPick}};
}

void from_json(const nlohmann::ordered_json& j, LightroomMarkItem& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.path = json::getText(j, "path");
    value.previousPick = json::get<int>(j, "previousPick");
}

} // namespace brevant
