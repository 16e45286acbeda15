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

// What darktable knows about one image file. darktable keeps each duplicate
// ("virtual copy") of a file as an image row of its own; they are one file
// here, and what the user did to any of them counts for the file.
struct DarktableRef {
    // The row of the file's first version.
    std::int64_t imageID = 0;
    // Every row of the file, the first version's first.
    std::vector<std::int64_t> versionIDs;
    // Stars, 0 to 5: the highest of its versions.
    int rating = 0;
    // Every version is rejected.
    bool isRejected = false;
    // darktable's colour label numbers, once each, in ascending order.
    std::vector<int> colorLabels;
    // The user's own tags (not darktable's "darktable|…" ones), once each.
    int tags = 0;
    // A version has a development history.
    bool isEdited = false;

    [[nodiscard]] int versions() const { return static_cast<int>(versionIDs.size()); }

    // Something the user did to the file in darktable: an edit, a second
    // version, stars, a colour label or tags.
    [[nodiscard]] bool workedOn() const;
    // That work in a few words ("edited, 2 versions, 3 stars"); empty when
    // there is none.
    [[nodiscard]] std::string workSummary() const;
    // The same with the colour labels named and a rejection told, as the
    // command line lists it.
    [[nodiscard]] std::string workDetails() const;

    // Every version of a file is marked with it, so none keeps the file.
    [[nodiscard]] std::optional<std::string> keepReason() const { return std::nullopt; }

    [[nodiscard]] static bool keepsRawPairTogether() { return false; }

    // darktable's names of its colour labels, by number.
    static constexpr std::array<std::string_view, 5> kColorNames = {"red", "yellow", "green",
                                                                    "blue", "purple"};
    [[nodiscard]] static std::optional<std::string_view> colorName(int label);

    // How a photo's record and a planned removal's id are stored.
    static constexpr std::string_view kKey = "darktable";
    static constexpr std::string_view kItemKey = "darktableImageID";

    friend bool operator==(const DarktableRef&, const DarktableRef&) = default;
};

void to_json(nlohmann::ordered_json& j, const DarktableRef& value);
void from_json(const nlohmann::ordered_json& j, DarktableRef& value);

} // namespace brevant

template <> struct std::hash<brevant::DarktableRef> {
    std::size_t operator()(const brevant::DarktableRef& v) const noexcept {
        return brevant::hashing::all(v.imageID, v.versionIDs, v.rating, v.isRejected, v.colorLabels,
                                     v.tags, v.isEdited);
    }
};
