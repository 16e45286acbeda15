#pragma once

#include "engine/support/Hashing.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace brevant {

// What Capture One knows about one image and its variants.
struct CaptureOneRef {
    std::int64_t imageID = 0;
    std::int64_t variantID = 0;
    int variants = 0;
    int rating = 0;
    std::vector<int> colorTags;
    bool isEdited = false;
    int albums = 0;
    int keywords = 0;

    // Something the user did to the image in Capture One: an edit, a second
    // variant, stars, a colour tag, an album or keywords.
    [[nodiscard]] bool workedOn() const;
    // That work in a few words ("edited, 2 variants, 3 stars"); empty when
    // there is none.
    [[nodiscard]] std::string workSummary() const;

    friend bool operator==(const CaptureOneRef&, const CaptureOneRef&) = default;
};

void to_json(nlohmann::ordered_json& j, const CaptureOneRef& value);
void from_json(const nlohmann::ordered_json& j, CaptureOneRef& value);

} // namespace brevant

template <> struct std::hash<brevant::CaptureOneRef> {
    std::size_t operator()(const brevant::CaptureOneRef& v) const noexcept {
        return brevant::hashing::all(v.imageID, v.variantID, v.variants, v.rating, v.colorTags,
                                     v.isEdited, v.albums, v.keywords);
    }
};
