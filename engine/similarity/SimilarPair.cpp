#include "SimilarPair.hpp"

#include "engine/support/Json.hpp"

#include <cmath>

namespace brevant {

namespace {

// A hash distance read back: whole bits of a 64-bit hash, nothing else.
std::uint8_t wholeBits(float distance) {
    bool whole = distance >= 0 && distance <= 64 && std::trunc(distance) == distance;
    if (!whole) {
        throw json::DecodeError("expected a whole number of bits, 0 to 64");
    }
    return static_cast<std::uint8_t>(distance);
}

} // namespace

void to_json(nlohmann::ordered_json& j, const SimilarPair& value) {
    j = {{"a", value.a},
         {"b", value.b},
         {"distance", static_cast<float>(value.distance)},
         {"detail", value.detail},
         {"shapesAgree", value.shapesAgree}};
    json::putOptional(j, "vision", value.vision.get());
}

void from_json(const nlohmann::ordered_json& j, SimilarPair& value) {
    value.a = json::get<int>(j, "a");
    value.b = json::get<int>(j, "b");
    value.distance = wholeBits(json::get<float>(j, "distance"));
    value.detail = json::get<std::int16_t>(j, "detail");
    value.shapesAgree = json::get<bool>(j, "shapesAgree");
    value.vision = json::getOptional<float>(j, "vision");
}

} // namespace brevant
