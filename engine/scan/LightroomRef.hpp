#pragma once

#include "engine/support/Hashing.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// What Lightroom Classic knows about one master photo.
struct LightroomRef {
    std::int64_t imageID = 0;
    int pick = 0;
    int rating = 0;
    bool isEdited = false;
    int virtualCopies = 0;
    int collections = 0;
    int keywords = 0;
    std::string colorLabel;
    std::vector<std::string> sidecarExtensions;

    // Something the user did to the photo in Lightroom: an edit, a pick
    // flag, stars, a colour label, a virtual copy, a collection or a
    // keyword. A Rejected flag is not work.
    [[nodiscard]] bool workedOn() const;

    // That work in words, such as "edited, has 2 virtual copies, 3 stars";
    // empty when there is none.
    [[nodiscard]] std::string workSummary() const;

    [[nodiscard]] std::string workDetails() const { return workSummary(); }

    // A virtual copy is an edit of this very file, so the file stays.
    [[nodiscard]] std::optional<std::string> keepReason() const;

    // With sidecars, Lightroom keeps the RAW and its partner together.
    [[nodiscard]] bool keepsRawPairTogether() const { return !sidecarExtensions.empty(); }

    // How a photo's record and a planned removal's id are stored.
    static constexpr std::string_view kKey = "lightroom";
    static constexpr std::string_view kItemKey = "lightroomImageID";

    friend bool operator==(const LightroomRef&, const LightroomRef&) = default;
};

void to_json(nlohmann::ordered_json& j, const LightroomRef& value);
void from_json(const nlohmann::ordered_json& j, LightroomRef& value);

} // namespace brevant

template <> struct std::hash<brevant::LightroomRef> {
    std::size_t operator()(const brevant::LightroomRef& v) const noexcept {
        return brevant::hashing::all(v.imageID, v.pick, v.rating, v.isEdited, v.virtualCopies,
                                     v.collections, v.keywords, v.colorLabel, v.sidecarExtensions);
    }
};
