#pragma once

#include "engine/support/Hashing.hpp"

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// What digiKam knows about one of its items. Pick and colour labels are
// numbered as digiKam numbers them; it keeps them as tags of its own.
struct DigikamRef {
    std::int64_t imageID = 0;
    // 0 to 5 stars; -1 when never rated.
    int rating = -1;
    int pickLabel = 0;
    int colorLabel = 0;
    // The user's own tags, not digiKam's internal ones.
    int tags = 0;

    static constexpr int kRejected = 1;
    static constexpr int kPending = 2;
    static constexpr int kAccepted = 3;

    // Something the user did to the item in digiKam: stars, an Accepted
    // pick, a colour label or a tag.
    [[nodiscard]] bool workedOn() const;
    // That work in a few words ("3 stars, picked"); empty when there is none.
    [[nodiscard]] std::string workSummary() const;
    // The same with the colour named, as the command line lists it.
    [[nodiscard]] std::string workDetails() const;

    [[nodiscard]] std::optional<std::string> keepReason() const { return std::nullopt; }

    [[nodiscard]] static bool keepsRawPairTogether() { return false; }

    // digiKam's name of a colour label: "Red" for 1; nothing for none or a
    // number it does not have.
    static constexpr std::array<std::string_view, 10> kColorNames = {
        "", "Red", "Orange", "Yellow", "Green", "Blue", "Magenta", "Gray", "Black", "White"};
    [[nodiscard]] static std::optional<std::string_view> colorName(int label);

    // How a photo's record and a planned removal's id are stored.
    static constexpr std::string_view kKey = "digikam";
    static constexpr std::string_view kItemKey = "digikamImageID";

    friend bool operator==(const DigikamRef&, const DigikamRef&) = default;
};

void to_json(nlohmann::ordered_json& j, const DigikamRef& value);
void from_json(const nlohmann::ordered_json& j, DigikamRef& value);

} // namespace brevant

template <> struct std::hash<brevant::DigikamRef> {
    std::size_t operator()(const brevant::DigikamRef& v) const noexcept {
        return brevant::hashing::all(v.imageID, v.rating, v.pickLabel, v.colorLabel, v.tags);
    }
};
