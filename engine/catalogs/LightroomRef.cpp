#include "LightroomRef.hpp"

#include "engine/support/Json.hpp"

namespace brevant {

void to_json(nlohmann::ordered_json& j, const LightroomRef& value) {
    j = {{"imageID", value.imageID},
         {"pick", value.pick},
         {"rating", value.rating},
         {"isEdited", value.isEdited},
         {"virtualCopies", value.virtualCopies},
         {"collections", value.collections},
         {"keywords", value.keywords},
         {"colorLabel", json::text(value.colorLabel)},
         {"sidecarExtensions", json::textList(value.sidecarExtensions)}};
}

void from_json(const nlohmann::ordered_json& j, LightroomRef& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.pick = json::get<int>(j, "pick");
    value.rating = json::get<int>(j, "rating");
    value.isEdited = json::get<bool>(j, "isEdited");
    value.virtualCopies = json::get<int>(j, "virtualCopies");
    value.collections = json::get<int>(j, "collections");
    value.keywords = json::get<int>(j, "keywords");
    value.colorLabel = json::getText(j, "colorLabel");
    value.sidecarExtensions = json::getTextList(j, "sidecarExtensions");
}

} // namespace brevant
