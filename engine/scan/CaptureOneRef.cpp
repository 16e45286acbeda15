#include "CaptureOneRef.hpp"

#include "engine/support/Json.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <string>
#include <vector>

namespace brevant {

bool CaptureOneRef::workedOn() const {
    bool tagged = std::ranges::any_of(colorTags, [](int tag) { return tag != 0; });
    return isEdited || variants >= 2 || rating >= 1 || tagged || albums >= 1 || keywords > 0;
}

std::string CaptureOneRef::workSummary() const {
    std::vector<std::string> phrases;
    if (isEdited) {
        phrases.emplace_back("edited");
    }
    if (variants >= 2) {
        phrases.push_back(fmt::format("{} variants", variants));
    }
    if (rating >= 1) {
        phrases.push_back(rating == 1 ? "1 star" : fmt::format("{} stars", rating));
    }
    if (std::ranges::any_of(colorTags, [](int tag) { return tag != 0; })) {
        phrases.emplace_back("colour tagged");
    }
    if (albums >= 1) {
        phrases.push_back(albums == 1 ? "in an album" : fmt::format("in {} albums", albums));
    }
    if (keywords > 0) {
        phrases.emplace_back(keywords == 1 ? "has a keyword" : "has keywords");
    }
    return fmt::format("{}", fmt::join(phrases, ", "));
}

std::string CaptureOneRef::workDetails() const {
    std::vector<std::string> phrases;
    if (isEdited) {
        phrases.emplace_back("edited");
    }
    if (variants > 1) {
        phrases.push_back(fmt::format("{} variants", variants));
    }
    if (rating > 0) {
        phrases.push_back(rating == 1 ? "1 star" : fmt::format("{} stars", rating));
    }
    for (int tag : colorTags) {
        if (auto color = colorName(tag); color && !color->empty()) {
            phrases.push_back(fmt::format("tagged {}", *color));
        }
    }
    if (albums > 0) {
        phrases.push_back(albums == 1 ? "in an album" : fmt::format("in {} albums", albums));
    }
    if (keywords > 0) {
        phrases.emplace_back("has keywords");
    }
    return fmt::format("{}", fmt::join(phrases, ", "));
}

std::optional<std::string> CaptureOneRef::keepReason() const {
    if (variants < 2) {
        return std::nullopt;
    }
    return "Has a second variant in Capture One, which is another edit of this very file, so it "
           "is kept";
}

std::optional<std::string_view> CaptureOneRef::colorName(int index) {
    if (index < 1 || index >= static_cast<int>(kColorNames.size())) {
        return std::nullopt;
    }
    return kColorNames[static_cast<std::size_t>(index)];
}

void to_json(nlohmann::ordered_json& j, const CaptureOneRef& value) {
    j = {{"imageID", value.imageID}, {"variantID", value.variantID}, {"variants", value.variants},
         {"rating", value.rating},   {"colorTags", value.colorTags}, {"isEdited", value.isEdited},
         {"albums", value.albums},   {"keywords", value.keywords}};
}

void from_json(const nlohmann::ordered_json& j, CaptureOneRef& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.variantID = json::get<std::int64_t>(j, "variantID");
    value.variants = json::get<int>(j, "variants");
    value.rating = json::get<int>(j, "rating");
    value.colorTags = json::get<std::vector<int>>(j, "colorTags");
    value.isEdited = json::get<bool>(j, "isEdited");
    value.albums = json::get<int>(j, "albums");
    value.keywords = json::get<int>(j, "keywords");
}

} // namespace brevant
