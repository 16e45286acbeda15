#include "MemberOrientation.hpp"

#include "engine/support/Json.hpp"

#include <fmt/format.h>

namespace brevant {

namespace {

constexpr int kTurns = 4;

} // namespace

MemberOrientation MemberOrientation::fromMatched(int orientation) {
    if (orientation < 0 || orientation >= 2 * kTurns) {
        return {};
    }
    // The first member looks like this copy brought into the matched
    // orientation, so the copy is the first member taken the other way: a
    // turn undone is the opposite turn, and a mirror after turning t is the
    // same as turning -t after mirroring.
    int turn = orientation % kTurns;
    return {.mirrored = orientation >= kTurns, .degrees = (kTurns - turn) % kTurns * 90};
}

std::string MemberOrientation::words() const {
    if (!mirrored) {
        return degrees == 0 ? std::string() : fmt::format("turned {}°", degrees);
    }
    return degrees == 0 ? std::string("mirrored") : fmt::format("mirrored, turned {}°", degrees);
}

void to_json(nlohmann::ordered_json& j, const MemberOrientation& value) {
    j = json::Json::object();
    j["mirrored"] = value.mirrored;
    j["degrees"] = value.degrees;
}

void from_json(const nlohmann::ordered_json& j, MemberOrientation& value) {
    value.mirrored = json::get<bool>(j, "mirrored");
    value.degrees = json::get<int>(j, "degrees");
}

} // namespace brevant
