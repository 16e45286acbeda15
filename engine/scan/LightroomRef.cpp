#include "LightroomRef.hpp"

#include "engine/support/Json.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace brevant {

bool LightroomRef::workedOn() const {
    return isEdited || pick > 0 || rating > 0 || virtualCopies > 0 || collections > 0 ||
           keywords > 0 || !colorLabel.empty();
}

std::string LightroomRef::workSummary() const {
    std::vector<std::string> phrases;
    if (isEdited) {
        phrases.emplace_back("edited");
    }
    if (virtualCopies > 0) {
        phrases.push_back(virtualCopies == 1 ? "has a virtual copy"
                                             : fmt::format("has {} virtual copies", virtualCopies));
    }
    if (pick >= 1) {
        phrases.emplace_back("flagged as a pick");
    }
    if (rating > 0) {
        phrases.push_back(rating == 1 ? "1 star" : fmt::format("{} stars", rating));
    }
    if (!colorLabel.empty()) {
        phrases.push_back("labelled " + colorLabel);
    }
    if (collections > 0) {
        phrases.push_back(collections == 1 ? "in a collection"
                                           : fmt::format("in {} collections", collections));
    }
    if (keywords > 0) {
        phrases.emplace_back(keywords == 1 ? "has a keyword" : "has keywords");
    }
    return fmt::format("{}", fmt::join(phrases, ", "));
}

std::optional<std::string> LightroomRef::keepReason() const {
    if (virtualCopies < 1) {
        return std::nullopt;
    }
    return "Has a virtual copy in Lightroom Classic, which is an edit of this very file, so it is "
           "kept";
}

void to_json(nlohmann::ordered_json& j, const LightroomRef& value) {
    j = {{"imageID", value.imageID},
         {"pick", value.pick},
         {"rating", value.rating},
         {"isEdited", value.isEdited},
         {"virtualCopies", value.virtualCopies},
         {"collections", value.collections},
         {"keywords", value.keywords},
         {"colorLabel", json::text(value.colorLabel)},
         {"sidecarExtensions", json::textList(value.sidecarExtensions)}};
}

void from_json(const nlohmann::ordered_json& j, LightroomRef& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.pick = json::get<int>(j, "pick");
    value.rating = json::get<int>(j, "rating");
    value.isEdited = json::get<bool>(j, "isEdited");
    value.virtualCopies = json::get<int>(j, "virtualCopies");
    value.collections = json::get<int>(j, "collections");
    value.keywords = json::get<int>(j, "keywords");
    value.colorLabel = json::getText(j, "colorLabel");
    value.sidecarExtensions = json::getTextList(j, "sidecarExtensions");
}

} // namespace brevant
