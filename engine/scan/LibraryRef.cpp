#include "LibraryRef.hpp"

#include "engine/support/Json.hpp"

namespace brevant {

void to_json(nlohmann::ordered_json& j, const LibraryRef& value) {
    j = {{"id", json::text(value.id)},     {"filename", json::text(value.filename)},
         {"isFavorite", value.isFavorite}, {"isLivePhoto", value.isLivePhoto},
         {"hasRAWPair", value.hasRAWPair}, {"isEdited", value.isEdited}};
}

void from_json(const nlohmann::ordered_json& j, LibraryRef& value) {
    value.id = json::getText(j, "id");
    value.filename = json::getText(j, "filename");
    value.isFavorite = json::get<bool>(j, "isFavorite");
    value.isLivePhoto = json::get<bool>(j, "isLivePhoto");
    value.hasRAWPair = json::get<bool>(j, "hasRAWPair");
    value.isEdited = json::get<bool>(j, "isEdited");
}

} // namespace brevant
