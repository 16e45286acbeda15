#pragma once

#include "engine/support/Date.hpp"
#include "engine/support/Hashing.hpp"
#include "engine/support/Uuid.hpp"

#include <cstdint>
#include <expected>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// What one marking did to a Lightroom Classic catalog, written down so that
// it can be undone: which photos were flagged Rejected and the flag each had
// before.
struct LightroomMarkRecord {
    struct Item {
        // Adobe_images.id_local
        std::int64_t imageID = 0;
        std::string path;
        // 0 or 1: Rejected photos are never marked.
        int previousPick = 0;

        friend bool operator==(const Item&, const Item&) = default;
    };

    Uuid id;
    // The approved cleanup plan that was carried out.
    Uuid planID;
    std::string catalogPath;
    std::string backupPath;
    // Stored to the second.
    Date date;
    std::vector<Item> marked;
    bool restored = false;

    // Pretty printed, keys sorted, dates in ISO 8601.
    [[nodiscard]] std::string encoded() const;
    [[nodiscard]] static std::expected<LightroomMarkRecord, std::string>
    decode(std::string_view document);

    friend bool operator==(const LightroomMarkRecord&, const LightroomMarkRecord&) = default;
};

void to_json(nlohmann::ordered_json& j, const LightroomMarkRecord::Item& value);
void from_json(const nlohmann::ordered_json& j, LightroomMarkRecord::Item& value);
void to_json(nlohmann::ordered_json& j, const LightroomMarkRecord& value);
void from_json(const nlohmann::ordered_json& j, LightroomMarkRecord& value);

} // namespace brevant

template <> struct std::hash<brevant::LightroomMarkRecord::Item> {
    std::size_t operator()(const brevant::LightroomMarkRecord::Item& v) const noexcept {
        return brevant::hashing::all(v.imageID, v.path, v.previousPick);
    }
};
