#include "SimilarPair.hpp"

#include "engine/support/Json.hpp"

namespace brevant {

void to_json(nlohmann::ordered_json& j, const SimilarPair& value) {
    j = {{"a", value.a},
         {"b", value.b},
         {"distance", value.distance},
         {"detail", value.detail},
         {"shapesAgree", value.shapesAgree}};
    json::putOptional(j, "vision", value.vision);
}

void from_json(const nlohmann::ordered_json& j, SimilarPair& value) {
    value.a = json::get<int>(j, "a");
    value.b = json::get<int>(j, "b");
    value.distance = json::get<float>(j, "distance");
    value.detail = json::get<std::int16_t>(j, "detail");
    value.shapesAgree = json::get<bool>(j, "shapesAgree");
    value.vision = json::getOptional<float>(j, "vision");
}

} // namespace brevant
