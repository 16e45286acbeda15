#pragma once

#include "engine/support/Hashing.hpp"

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
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
    // The same with the colour tags named, as the command line lists it.
    [[nodiscard]] std::string workDetails() const;

    // A second variant is another edit of this very file, so the file stays.
    [[nodiscard]] std::optional<std::string> keepReason() const;

    [[nodiscard]] static bool keepsRawPairTogether() { return false; }

    // Capture One's name of a colour tag: "Red" for 1; nothing for no tag
    // or an index it does not have.
    static constexpr std::array<std::string_view, 8> kColorNames = {
        "", "Red", "Orange", "Yellow", "Green", "Blue", "Pink", "Purple"};
    [[nodiscard]] static std::optional<std::string_view> colorName(int index);

    // How a photo's record and a planned removal's id are stored.
    static constexpr std::string_view kKey = "captureOne";
    static constexpr std::string_view kItemKey = "captureOneImageID";

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
