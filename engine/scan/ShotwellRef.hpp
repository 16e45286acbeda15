#pragma once

#include "engine/support/Hashing.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// What Shotwell knows about one photo of its library.
struct ShotwellRef {
    std::int64_t imageID = 0;
    // Shotwell's rating: -1 is Rejected, 0 none, 1 to 5 stars.
    int rating = 0;
    // Hidden from Shotwell's views by the user.
    bool isHidden = false;
    // Flagged by the user.
    bool isFlagged = false;
    // Adjusted in Shotwell, or edited in an outside editor through it.
    bool isEdited = false;
    int tags = 0;

    // Something the user did to the photo in Shotwell: an edit, stars, a
    // flag, hiding it or tags. A Rejected rating is not work.
    [[nodiscard]] bool workedOn() const;
    // That work in a few words ("edited, 3 stars, has tags"); empty when
    // there is none.
    [[nodiscard]] std::string workSummary() const;

    [[nodiscard]] std::string workDetails() const { return workSummary(); }

    // Shotwell keeps no second edit of a file as a photo of its own.
    [[nodiscard]] std::optional<std::string> keepReason() const { return std::nullopt; }

    [[nodiscard]] static bool keepsRawPairTogether() { return false; }

    [[nodiscard]] bool isRejected() const { return rating < 0; }

    // How a photo's record and a planned removal's id are stored.
    static constexpr std::string_view kKey = "shotwell";
    static constexpr std::string_view kItemKey = "shotwellPhotoID";

    friend bool operator==(const ShotwellRef&, const ShotwellRef&) = default;
};

void to_json(nlohmann::ordered_json& j, const ShotwellRef& value);
void from_json(const nlohmann::ordered_json& j, ShotwellRef& value);

} // namespace brevant

template <> struct std::hash<brevant::ShotwellRef> {
    std::size_t operator()(const brevant::ShotwellRef& v) const noexcept {
        return brevant::hashing::all(v.imageID, v.rating, v.isHidden, v.isFlagged, v.isEdited,
                                     v.tags);
    }
};
