#include "DuplicateGroup.hpp"

#include "engine/support/Json.hpp"

#include <algorithm>

namespace brevant {

DuplicateGroup DuplicateGroup::make(std::string sha256, std::int64_t size,
                                    std::vector<PhotoAsset> members, MatchKind kind,
                                    std::optional<float> spread) {
    return DuplicateGroup{std::move(sha256), size, std::move(members), kind, spread};
}

std::int64_t DuplicateGroup::extraBytes() const {
    // A Live Photo's still is its fixed keeper, however small it is next to the movie.
    if (kind == MatchKind::liveMovie && !members.empty()) {
        std::int64_t total = 0;
        for (const auto& member : members) {
            total += member.snapshot.size;
        }
        return total - members.front().snapshot.size;
    }
    std::int64_t total = 0;
    std::int64_t largest = 0;
    for (const auto& member : members) {
        total += member.snapshot.size;
        largest = std::max(largest, member.snapshot.size);
    }
    return total - largest;
}

MemberOrientation DuplicateGroup::orientationOf(const std::string& path) const {
    auto found = orientations.find(path);
    return found != orientations.end() ? found->second : MemberOrientation{};
}

void to_json(nlohmann::ordered_json& j, const DuplicateGroup& value) {
    j = json::Json::object();
    j["id"] = json::text(value.id);
    j["size"] = value.size;
    j["members"] = value.members;
    // Said on the member itself, only where it is turned or mirrored.
    for (auto& member : j["members"]) {
        auto found = value.orientations.find(json::getText(member, "path"));
        if (found != value.orientations.end()) {
            member["orientation"] = found->second;
        }
    }
    j["kind"] = json::enumValue(value.kind);
    json::putOptional(j, "spread", value.spread);
}

void from_json(const nlohmann::ordered_json& j, DuplicateGroup& value) {
    value.id = json::getText(j, "id");
    value.size = json::get<std::int64_t>(j, "size");
    value.members = json::get<std::vector<PhotoAsset>>(j, "members");
    value.orientations.clear();
    for (const auto& member : json::field(j, "members")) {
        if (json::has(member, "orientation")) {
            value.orientations.emplace(json::getText(member, "path"),
                                       json::get<MemberOrientation>(member, "orientation"));
        }
    }
    value.kind = json::getEnum<MatchKind>(j, "kind");
    value.spread = json::getOptional<float>(j, "spread");
}

} // namespace brevant
