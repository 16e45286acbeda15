#pragma once

#include "engine/support/Date.hpp"
#include "engine/support/Uuid.hpp"

#include <cstdint>
#include <expected>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// What one tagging did to a Capture One catalog, written down so that it
// can be undone: which metadata rows were tagged Red, with the tag each had
// and the variant's modification date before.
struct CaptureOneMarkRecord {
    struct Item {
        // ZIMAGE.Z_PK
        std::int64_t imageID = 0;
        // ZVARIANT.Z_PK of the variant that was tagged.
        std::int64_t variantID = 0;
        std::string path;
        // ZVARIANTMETADATA.Z_PK of the rows changed, in ascending layer order.
        std::vector<std::int64_t> metadataIDs;
        // The tag each row held before; nothing for NULL.
        std::vector<std::optional<int>> previousTags;
        // ZLASTMETADATAMODIFICATIONDATE before; nothing for NULL.
        std::optional<double> previousModified;

        friend bool operator==(const Item&, const Item&) = default;
    };

    Uuid id;
    Uuid planID;
    // The package.
    std::string catalogPath;
    std::string backupPath;
    // Stored to the second.
    Date date;
    std::vector<Item> marked;
    bool restored = false;

    // Pretty printed, keys sorted, dates in ISO 8601.
    [[nodiscard]] std::string encoded() const;
    [[nodiscard]] static std::expected<CaptureOneMarkRecord, std::string>
    decode(std::string_view document);

    friend bool operator==(const CaptureOneMarkRecord&, const CaptureOneMarkRecord&) = default;
};

void to_json(nlohmann::ordered_json& j, const CaptureOneMarkRecord::Item& value);
void from_json(const nlohmann::ordered_json& j, CaptureOneMarkRecord::Item& value);
void to_json(nlohmann::ordered_json& j, const CaptureOneMarkRecord& value);
void from_json(const nlohmann::ordered_json& j, CaptureOneMarkRecord& value);

} // namespace brevant
