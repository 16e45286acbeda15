#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace brevant {

// How a copy in a similar group or series stands against the group's first
// member: mirrored left-right or not, then turned clockwise.
struct MemberOrientation {
    bool mirrored = false;
    int degrees = 0; // 0, 90, 180 or 270

    // From the orientation at which the first member's hash matched this
    // copy's hashes, an index as ImageFeatures lists them (turn t at t, turn
    // t then mirrored at 4 + t); upright for any other number.
    [[nodiscard]] static MemberOrientation fromMatched(int orientation);

    [[nodiscard]] bool isUpright() const { return !mirrored && degrees == 0; }

    // "turned 90°", "mirrored", "mirrored, turned 180°"; empty when upright.
    [[nodiscard]] std::string words() const;

    friend bool operator==(const MemberOrientation&, const MemberOrientation&) = default;
};

void to_json(nlohmann::ordered_json& j, const MemberOrientation& value);
void from_json(const nlohmann::ordered_json& j, MemberOrientation& value);

} // namespace brevant
