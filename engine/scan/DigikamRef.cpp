#include "DigikamRef.hpp"

#include "engine/support/Json.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <vector>

namespace brevant {

namespace {

// The phrases of the work, the colour told by `color`.
template <class Color> std::string phrases(const DigikamRef& ref, Color color) {
    std::vector<std::string> parts;
    if (ref.rating >= 1) {
        parts.push_back(ref.rating == 1 ? "1 star" : fmt::format("{} stars", ref.rating));
    }
    if (ref.pickLabel == DigikamRef::kAccepted) {
        parts.emplace_back("picked");
    }
    if (ref.colorLabel != 0) {
        parts.push_back(color(ref.colorLabel));
    }
    if (ref.tags > 0) {
        parts.push_back(ref.tags == 1 ? "has a tag" : fmt::format("has {} tags", ref.tags));
    }
    return fmt::format("{}", fmt::join(parts, ", "));
}

} // namespace

bool DigikamRef::workedOn() const {
    return rating >= 1 || pickLabel == kAccepted || colorLabel != 0 || tags > 0;
}

std::string DigikamRef::workSummary() const {
    return phrases(*this, [](int) { return std::string("colour labelled"); });
}

std::string DigikamRef::workDetails() const {
    return phrases(*this, [](int label) {
        auto name = colorName(label);
        return name ? fmt::format("labelled {}", *name) : std::string("colour labelled");
    });
}

std::optional<std::string_view> DigikamRef::colorName(int label) {
    if (label < 1 || label >= static_cast<int>(kColorNames.size())) {
        return std::nullopt;
    }
    return kColorNames[static_cast<std::size_t>(label)];
}

void to_json(nlohmann::ordered_json& j, const DigikamRef& value) {
    j = {{"imageID", value.imageID},
         {"rating", value.rating},
         {"pickLabel", value.pickLabel},
         {"colorLabel", value.colorLabel},
         {"tags", value.tags}};
}

void from_json(const nlohmann::ordered_json& j, DigikamRef& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.rating = json::get<int>(j, "rating");
    value.pickLabel = json::get<int>(j, "pickLabel");
    value.colorLabel = json::get<int>(j, "colorLabel");
    value.tags = json::get<int>(j, "tags");
}

} // namespace brevant
