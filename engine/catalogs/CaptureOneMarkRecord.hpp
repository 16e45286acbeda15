#pragma once

#include "engine/catalogs/CatalogMarkRecord.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// One image a marking tagged Red in a Capture One catalog: which metadata
// rows were tagged, with the tag each had and the variant's modification
// date before.
struct CaptureOneMarkItem {
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

    friend bool operator==(const CaptureOneMarkItem&, const CaptureOneMarkItem&) = default;
};

void to_json(nlohmann::ordered_json& j, const CaptureOneMarkItem& value);
void from_json(const nlohmann::ordered_json& j, CaptureOneMarkItem& value);

// The package's path is the catalog's.
using CaptureOneMarkRecord = CatalogMarkRecord<CaptureOneMarkItem>;

} // namespace brevant
