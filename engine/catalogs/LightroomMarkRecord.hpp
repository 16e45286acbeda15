#pragma once

#include "engine/catalogs/CatalogMarkRecord.hpp"
#include "engine/support/Hashing.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace brevant {

// One photo a marking flagged Rejected in a Lightroom Classic catalog, with
// the flag it had before.
struct LightroomMarkItem {
    // Adobe_images.id_local
    std::int64_t imageID = 0;
    std::string path;
    // 0 or 1: Rejected photos are never marked.
    int previousPick = 0;

    friend bool operator==(const LightroomMarkItem&, const LightroomMarkItem&) = default;
};

void to_json(nlohmann::ordered_json& j, const LightroomMarkItem& value);
void from_json(const nlohmann::ordered_json& j, LightroomMarkItem& value);

using LightroomMarkRecord = CatalogMarkRecord<LightroomMarkItem>;

} // namespace brevant

template <> struct std::hash<brevant::LightroomMarkItem> {
    std::size_t operator()(const brevant::LightroomMarkItem& v) const noexcept {
        return brevant::hashing::all(v.imageID, v.path, v.previousPick);
    }
};
