#pragma once

#include "engine/catalogs/CatalogMarkRecord.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// The tag a photo library's marking gives the approved duplicates, so that
// the user can show them in the library's own application and delete them
// there. It is made at the top of the tag tree when the library has none.
inline constexpr std::string_view kDuplicatesTag = "Brevant Duplicates";

// One photo a marking tagged in a photo library, with what undo needs to
// take exactly that back: the rows given the tag, and whether the tag
// itself was made by this marking.
struct TagMarkItem {
    // The photo's id in the library.
    std::int64_t imageID = 0;
    std::string path;
    // Every library row that was given the tag for this file (one, or each
    // version of it where the library keeps versions as rows of their own).
    std::vector<std::int64_t> taggedIDs;
    std::int64_t tagID = 0;
    // The marking made the tag; undo takes it away again once nothing
    // carries it.
    bool tagCreated = false;

    friend bool operator==(const TagMarkItem&, const TagMarkItem&) = default;
};

void to_json(nlohmann::ordered_json& j, const TagMarkItem& value);
void from_json(const nlohmann::ordered_json& j, TagMarkItem& value);

using TagMarkRecord = CatalogMarkRecord<TagMarkItem>;

} // namespace brevant
