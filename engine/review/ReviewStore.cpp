#include "ReviewStore.hpp"

#include "engine/review/StoredDocument.hpp"
#include "engine/similarity/SimilarityPreset.hpp"
#include "engine/support/Json.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace brevant {

namespace {

using json::Json;

Json copyJson(const SavedReview::Copy& copy) {
    return {{"path", json::text(copy.path)}, {"snapshot", copy.snapshot}};
}

Json copiesJson(const std::vector<SavedReview::Copy>& copies) {
    Json array = Json::array();
    for (const auto& copy : copies) {
        array.push_back(copyJson(copy));
    }
    return array;
}

std::vector<SavedReview::Copy> decodeCopies(const Json& object, std::string_view key) {
    const Json& array = json::field(object, key);
    if (!array.is_array()) {
        throw json::DecodeError(std::string(key) + " is not a list");
    }
    std::vector<SavedReview::Copy> copies;
    for (const auto& copy : array) {
        if (!copy.is_object()) {
            throw json::DecodeError("a copy is not an object");
        }
        copies.push_back({.path = json::getText(copy, "path"),
                          .snapshot = json::get<FileSnapshot>(copy, "snapshot")});
    }
    return copies;
}

template <class E> E decodeCase(const Json& object, std::string_view key) {
    auto value = fromRawValue<E>(json::getText(object, key));
    if (!value) {
        throw json::DecodeError(std::string(key) + " is not a known value");
    }
    return *value;
}

SavedReview decodeReview(const Json& object) {
    if (!object.is_object()) {
        throw json::DecodeError("a review is not an object");
    }
    SavedReview review{.folders = json::getTextList(object, "folders"),
                       .mode = {.kind = decodeCase<ScanMode::Kind>(object, "mode"),
                                .preset = decodeCase<SimilarityPreset>(object, "preset")},
                       .saved = json::getDate(object, "saved"),
                       .marks = decodeCopies(object, "marks")};
    if (!std::isfinite(review.saved.secondsSinceReferenceDate)) {
        throw json::DecodeError("\"saved\" is not a date");
    }
    const Json& reviewed = json::field(object, "reviewed");
    if (!reviewed.is_array()) {
        throw json::DecodeError("\"reviewed\" is not a list");
    }
    for (const auto& group : reviewed) {
        if (!group.is_object()) {
            throw json::DecodeError("a reviewed group is not an object");
        }
        review.reviewed.push_back(
            {.id = json::getText(group, "id"), .members = decodeCopies(group, "members")});
    }
    return review;
}

} // namespace

ReviewStore::ReviewStore(std::optional<std::string> path, Clock clock)
    : path_(std::move(path))
    , clock_(clock ? std::move(clock) : Clock(Date::now)) {
    load();
}

std::string ReviewStore::encode(const std::vector<SavedReview>& reviews) {
    Json array = Json::array();
    for (const auto& review : reviews) {
        Json reviewed = Json::array();
        for (const auto& group : review.reviewed) {
            reviewed.push_back(
                {{"id", json::text(group.id)}, {"members", copiesJson(group.members)}});
        }
        array.push_back({{"folders", json::textList(review.folders)},
                         {"mode", rawValue(review.mode.kind)},
                         {"preset", rawValue(review.mode.preset)},
                         {"saved", json::date(review.saved)},
                         {"marks", copiesJson(review.marks)},
                         {"reviewed", std::move(reviewed)}});
    }
    return array.dump(2) + "\n";
}

std::expected<std::vector<SavedReview>, std::string>
ReviewStore::decode(std::string_view document) {
    try {
        Json array = json::parse(document);
        if (!array.is_array()) {
            throw json::DecodeError("expected an array of reviews");
        }
        std::vector<SavedReview> reviews;
        reviews.reserve(array.size());
        for (const auto& object : array) {
            reviews.push_back(decodeReview(object));
        }
        return reviews;
    } catch (const std::exception& e) {
        return std::unexpected(std::string("The saved reviews could not be read: ") + e.what());
    }
}

void ReviewStore::load() {
    if (!path_) {
        return;
    }
    auto document = StoredDocument::read(*path_);
    if (document) {
        const std::optional<std::string>& text = *document;
        if (!text) {
            return;
        }
        if (auto decoded = decode(*text)) {
            reviews_ = std::move(*decoded);
            return;
        }
    }
    auto seconds = static_cast<std::int64_t>(std::floor(clock_().unixSeconds()));
    if (auto aside = StoredDocument::setAside(*path_, seconds)) {
        setAsideTo_ = std::move(*aside);
        return;
    }
    damaged_ = true;
}

std::optional<SavedReview> ReviewStore::find(const std::vector<std::string>& folders,
                                             ScanMode::Kind kind) const {
    std::lock_guard guard(mutex_);
    auto found = std::ranges::find_if(
        reviews_, [&](const SavedReview& review) { return review.sameKey(folders, kind); });
    if (found == reviews_.end()) {
        return std::nullopt;
    }
    return *found;
}

std::optional<SavedReview> ReviewStore::latest() const {
    std::lock_guard guard(mutex_);
    if (reviews_.empty()) {
        return std::nullopt;
    }
    return reviews_.front();
}

std::vector<SavedReview> ReviewStore::all() const {
    std::lock_guard guard(mutex_);
    return reviews_;
}

bool ReviewStore::save(SavedReview review) {
    std::lock_guard guard(mutex_);
    if (damaged_) {
        return false;
    }
    review.folders = SavedReview::keyFolders(std::move(review.folders));
    std::erase_if(reviews_, [&](const SavedReview& older) {
        return older.sameKey(review.folders, review.mode.kind);
    });
    reviews_.insert(reviews_.begin(), std::move(review));
    if (reviews_.size() > kKept) {
        reviews_.resize(kKept);
    }
    return !path_ || StoredDocument::write(*path_, encode(reviews_));
}

} // namespace brevant
