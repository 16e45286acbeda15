#include "DarktableRef.hpp"

#include "engine/support/Json.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace brevant {

namespace {

std::string starsText(int rating) {
    return rating == 1 ? std::string("1 star") : fmt::format("{} stars", rating);
}

// The phrases both texts share, in one order.
std::vector<std::string> commonPhrases(const DarktableRef& ref) {
    std::vector<std::string> phrases;
    if (ref.isEdited) {
        phrases.emplace_back("edited");
    }
    if (ref.versions() >= 2) {
        phrases.push_back(fmt::format("{} versions", ref.versions()));
    }
    if (ref.rating >= 1) {
        phrases.push_back(starsText(ref.rating));
    }
    return phrases;
}

std::string tagsText(int tags) {
    return tags == 1 ? std::string("has a tag") : std::string("has tags");
}

} // namespace

bool DarktableRef::workedOn() const {
    return isEdited || versions() >= 2 || rating >= 1 || !colorLabels.empty() || tags > 0;
}

std::string DarktableRef::workSummary() const {
    auto phrases = commonPhrases(*this);
    if (!colorLabels.empty()) {
        phrases.emplace_back("colour labelled");
    }
    if (tags > 0) {
        phrases.push_back(tagsText(tags));
    }
    return fmt::format("{}", fmt::join(phrases, ", "));
}

std::string DarktableRef::workDetails() const {
    auto phrases = commonPhrases(*this);
    for (int label : colorLabels) {
        if (auto color = colorName(label)) {
            phrases.push_back(fmt::format("labelled {}", *color));
        }
    }
    if (tags > 0) {
        phrases.push_back(tagsText(tags));
    }
    if (isRejected) {
        phrases.emplace_back("rejected");
    }
    return fmt::format("{}", fmt::join(phrases, ", "));
}

std::optional<std::string_view> DarktableRef::colorName(int label) {
    if (label < 0 || label >= static_cast<int>(kColorNames.size())) {
        return std::nullopt;
    }
    return kColorNames[static_cast<std::size_t>(label)];
}

void to_json(nlohmann::ordered_json& j, const DarktableRef& value) {
    j = {{"imageID", value.imageID},         {"versionIDs", value.versionIDs},
         {"rating", value.rating},           {"isRejected", value.isRejected},
         {"colorLabels", value.colorLabels}, {"tags", value.tags},
         {"isEdited", value.isEdited}};
}

void from_json(const nlohmann::ordered_json& j, DarktableRef& value) {
    value.imageID = json::get<std::int64_t>(j, "imageID");
    value.versionIDs = json::get<std::vector<std::int64_t>>(j, "versionIDs");
    value.rating = json::get<int>(j, "rating");
    value.isRejected = json::get<bool>(j, "isRejected");
    value.colorLabels = json::get<std::vector<int>>(j, "colorLabels");
    value.tags = json::get<int>(j, "tags");
    value.isEdited = json::get<bool>(j, "isEdited");
}

} // namespace brevant
