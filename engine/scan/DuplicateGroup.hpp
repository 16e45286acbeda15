#pragma once

#include "engine/scan/MatchKind.hpp"
#include "engine/scan/MemberOrientation.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/support/Hashing.hpp"

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// Pictures that match one another.
struct DuplicateGroup {
    // For identical groups the lowercase hex SHA-256 of the shared contents.
    std::string id;
    std::int64_t size = 0;
    std::vector<PhotoAsset> members;
    MatchKind kind = MatchKind::identical;
    // The largest distance within a similar group; absent for identical ones.
    std::optional<float> spread;
    // By path: the copies of a similar group or series that are turned or
    // mirrored against the first member. Upright copies are not listed.
    std::map<std::string, MemberOrientation> orientations;

    [[nodiscard]] static DuplicateGroup make(std::string sha256, std::int64_t size,
                                             std::vector<PhotoAsset> members, MatchKind kind,
                                             std::optional<float> spread = std::nullopt);

    // What removing all but the largest copy would free (for a Live Photo: its movie).
    [[nodiscard]] std::int64_t extraBytes() const;

    // Upright for a copy that is not listed.
    [[nodiscard]] MemberOrientation orientationOf(const std::string& path) const;

    friend bool operator==(const DuplicateGroup&, const DuplicateGroup&) = default;
};

void to_json(nlohmann::ordered_json& j, const DuplicateGroup& value);
void from_json(const nlohmann::ordered_json& j, DuplicateGroup& value);

} // namespace brevant

template <> struct std::hash<brevant::DuplicateGroup> {
    std::size_t operator()(const brevant::DuplicateGroup& v) const noexcept {
        return brevant::hashing::all(v.id, v.size, v.members, v.kind, v.spread);
    }
};
