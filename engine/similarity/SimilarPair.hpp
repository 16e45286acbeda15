#pragma once

#include "engine/support/Hashing.hpp"
#include "engine/support/OptionalFloat.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>

namespace brevant {

// One evaluated pair of pictures, by their indices in the index's pictures.
// Tens of millions are kept for a million pictures, so each field takes no
// more than its values need and the fields are laid out without gaps.
struct SimilarPair {
    int a = 0; // the smaller index
    int b = 0;
    // Whole bits, 0 to 64; compared and written as a float.
    std::uint8_t distance = 0;
    bool shapesAgree = false;
    std::int16_t detail = 0; // 0 to 256 bits
    OptionalFloat vision;

    friend bool operator==(const SimilarPair&, const SimilarPair&) = default;
};

static_assert(sizeof(SimilarPair) == 16);

void to_json(nlohmann::ordered_json& j, const SimilarPair& value);
void from_json(const nlohmann::ordered_json& j, SimilarPair& value);

} // namespace brevant

template <> struct std::hash<brevant::SimilarPair> {
    std::size_t operator()(const brevant::SimilarPair& v) const noexcept {
        return brevant::hashing::all(v.a, v.b, v.distance, v.detail, v.shapesAgree, v.vision.get());
    }
};
