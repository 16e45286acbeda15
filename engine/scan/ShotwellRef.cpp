#include "ShotwellRef.hpp"

#include "engine/support/Json.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <vector>

namespace brevant {

bool ShotwellRef::workedOn() const {
    return isEdited || rating >= 1 || isFlagged || isHidden || tags > 0;
}

std::string ShotwellRef::workSummary() const {
    std::vector<std::string> phrases;
    if (isEdited) {
        phrases.emplace_back("edited");
    }
    if (rating >= 1) {
        phrases.push_back(rating == 1 ? "1 star" : fmt::format("{} stars", rating));
    }
    if (isFlagged) {
        phrases.emplace_back("flagged");
    }
    if (isHidden) {
        phrases.emplace_back("hidden");
    }
    if (tags > 0) {
        phrases.emplace_back(tags == 1 ? "has a tag" : "has tags");
    }
    return fmt::format("{}", fmt::join(phrases, ", "));
}

void to_json(nlohmann::ordered_json& j, const ShotwellRef& value) {
    j = {{"imageID", value.imageID},     {"rating", value.rating},     {"isHidden", value.isHidden},
         {"isFlagged", value.isFlagged}, {"isEdited", value.isEdited}, {"tags", value.tags}};
}

void from_json(const nlohmann::ordered_json& j, ShotwellRef& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.rating = json::get<int>(j, "rating");
    value.isHidden = json::get<bool>(j, "isHidden");
    value.isFlagged = json::get<bool>(j, "isFlagged");
    value.isEdited = json::get<bool>(j, "isEdited");
    value.tags = json::get<int>(j, "tags");
}

} // namespace brevant
