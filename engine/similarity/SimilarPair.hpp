#pragma once

#include "engine/support/Hashing.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>

namespace brevant {

// One evaluated pair of pictures, by their indices in the index's pictures.
struct SimilarPair {
    int a = 0; // the smaller index
    int b = 0;
    float distance = 0;
    // 0 to 256 bits: two bytes keep a million pictures' pairs small.
    std::int16_t detail = 0;
    bool shapesAgree = false;
    std::optional<float> vision;

    friend bool operator==(const SimilarPair&, const SimilarPair&) = default;
};

// Tens of millions are kept for a million pictures.
static_assert(sizeof(SimilarPair) <= 24);

void to_json(nlohmann::ordered_json& j, const SimilarPair& value);
void from_json(const nlohmann::ordered_json& j, SimilarPair& value);

} // namespace brevant

template <> struct std::hash<brevant::SimilarPair> {
    std::size_t operator()(const brevant::SimilarPair& v) const noexcept {
        return brevant::hashing::all(v.a, v.b, v.distance, v.detail, v.shapesAgree, v.vision);
    }
};
