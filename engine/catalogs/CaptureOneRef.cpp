#include "CaptureOneRef.hpp"

#include "engine/support/Json.hpp"

#include <algorithm>

namespace brevant {

bool CaptureOneRef::workedOn() const {
    bool tagged = std::ranges::any_of(colorTags, [](int tag) { return tag != 0; });
    return isEdited || variants >= 2 || rating >= 1 || tagged || albums >= 1 || keywords > 0;
}

void to_json(nlohmann::ordered_json& j, const CaptureOneRef& value) {
    j = {{"imageID", value.imageID}, {"variantID", value.variantID}, {"variants", value.variants},
         {"rating", value.rating},   {"colorTags", value.colorTags}, {"isEdited", value.isEdited},
         {"albums", value.albums},   {"keywords", value.keywords}};
}

void from_json(const nlohmann::ordered_json& j, CaptureOneRef& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.variantID = json::get<std::int64_t>(j, "variantID");
    value.variants = json::get<int>(j, "variants");
    value.rating = json::get<int>(j, "rating");
    value.colorTags = json::get<std::vector<int>>(j, "colorTags");
    value.isEdited = json::get<bool>(j, "isEdited");
    value.albums = json::get<int>(j, "albums");
    value.keywords = json::get<int>(j, "keywords");
}

} // namespace brevant
