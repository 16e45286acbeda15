#include "NotDuplicateStore.hpp"

#include "engine/review/StoredDocument.hpp"
#include "engine/scan/ContentReader.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PathRules.hpp"
#include "engine/support/Json.hpp"
#include "engine/support/Texts.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace brevant {

namespace {

using json::Json;
using Photo = NotDuplicateStore::Photo;
using Decision = NotDuplicateStore::Decision;

constexpr std::string_view kNothingRecorded = "nothing was recorded";

bool isDigest(const std::string& text) {
    return text.size() == 64 && std::ranges::all_of(text, [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
           });
}

Photo decodePhoto(const Json& object) {
    if (!object.is_object()) {
        throw json::DecodeError("a photo is not an object");
    }
    Photo photo{.sha256 = json::getText(object, "sha256"),
                .size = json::get<std::int64_t>(object, "size"),
                .path = json::getText(object, "path")};
    if (!isDigest(photo.sha256)) {
        throw json::DecodeError("\"sha256\" is not a SHA-256 digest");
    }
    return photo;
}

Decision decodeDecision(const Json& object) {
    if (!object.is_object()) {
        throw json::DecodeError("a decision is not an object");
    }
    Decision decision{.id = json::get<int>(object, "id")};
    const Json& photos = json::field(object, "photos");
    if (!photos.is_array() || photos.size() < 2) {
        throw json::DecodeError("\"photos\" is not a list of two or more photos");
    }
    for (const auto& photo : photos) {
        decision.photos.push_back(decodePhoto(photo));
    }
    decision.created = json::getDate(object, "created");
    if (!std::isfinite(decision.created.secondsSinceReferenceDate)) {
        throw json::DecodeError("\"created\" is not a date");
    }
    return decision;
}

// The picture's contents as the store knows them, or why it cannot be read.
std::expected<Photo, std::string> photoAt(const std::string& path) {
    auto snapshot = FileSnapshot::read(path);
    if (!snapshot) {
        return std::unexpected(fmt::format("{}: no such file; {}", path, kNothingRecorded));
    }
    if (snapshot->isSymbolicLink || !snapshot->isRegularFile) {
        return std::unexpected(
            fmt::format("{}: not a picture file (symbolic links are never followed); {}", path,
                        kNothingRecorded));
    }
    auto digest = ContentReader::sha256(path, *snapshot, std::nullopt, nullptr);
    if (!digest) {
        return std::unexpected(fmt::format("{}: could not be read ({}); {}", path,
                                           digest.error().detail, kNothingRecorded));
    }
    return Photo{.sha256 = *digest, .size = snapshot->size, .path = path};
}

} // namespace

NotDuplicateStore::NotDuplicateStore(std::optional<std::string> path, Clock clock)
    : path_(std::move(path))
    , clock_(clock ? std::move(clock) : Clock(Date::now)) {
    load();
}

std::string NotDuplicateStore::encode(const std::vector<Decision>& decisions) {
    Json array = Json::array();
    for (const auto& decision : decisions) {
        Json photos = Json::array();
        for (const auto& photo : decision.photos) {
            photos.push_back(
                {{"sha256", photo.sha256}, {"size", photo.size}, {"path", json::text(photo.path)}});
        }
        array.push_back({{"id", decision.id},
                         {"photos", std::move(photos)},
                         {"created", json::date(decision.created)}});
    }
    return array.dump(2) + "\n";
}

std::expected<std::vector<Decision>, std::string>
NotDuplicateStore::decode(std::string_view document) {
    try {
        Json array = json::parse(document);
        if (!array.is_array()) {
            throw json::DecodeError("expected an array of decisions");
        }
        std::vector<Decision> decisions;
        decisions.reserve(array.size());
        for (const auto& object : array) {
            decisions.push_back(decodeDecision(object));
        }
        return decisions;
    } catch (const std::exception& e) {
        return std::unexpected(std::string("The \"not duplicates\" file could not be read: ") +
                               e.what());
    }
}

void NotDuplicateStore::load() {
    if (!path_) {
        return;
    }
    auto document = StoredDocument::read(*path_);
    if (!document) {
        damage_ = document.error();
        return;
    }
    const std::optional<std::string>& text = *document;
    if (!text) {
        return;
    }
    auto decoded = decode(*text);
    if (!decoded) {
        damage_ = decoded.error();
        return;
    }
    decisions_ = std::move(*decoded);
}

std::optional<std::string> NotDuplicateStore::damage() const {
    std::lock_guard guard(mutex_);
    return damage_;
}

std::expected<std::string, std::string> NotDuplicateStore::setAside() {
    std::lock_guard guard(mutex_);
    if (!damage_ || !path_) {
        return std::unexpected(
            std::string("The \"not duplicates\" file is not damaged; nothing was moved."));
    }
    auto seconds = static_cast<std::int64_t>(std::floor(clock_().unixSeconds()));
    auto aside = StoredDocument::setAside(*path_, seconds);
    if (!aside) {
        return std::unexpected(fmt::format("The \"not duplicates\" file could not be moved aside "
                                           "to {}; nothing was changed.",
                                           aside.error()));
    }
    damage_.reset();
    decisions_.clear();
    static_cast<void>(save());
    return aside;
}

std::string NotDuplicateStore::damageMessage(std::string_view shownPath, std::string_view reason) {
    return fmt::format("The \"not duplicates\" file {} cannot be read ({}), so {} cannot tell "
                       "which pictures you said are different photos. Repair the file, or set it "
                       "aside to start again without those decisions.",
                       shownPath, reason, texts::kApplication);
}

std::expected<Decision, std::string>
NotDuplicateStore::declare(const std::vector<std::string>& paths) {
    std::vector<std::string> distinct;
    for (const auto& given : paths) {
        std::string path = PathRules::standardized(given);
        if (std::ranges::find(distinct, path) == distinct.end()) {
            distinct.push_back(std::move(path));
        }
    }
    if (distinct.size() < 2) {
        return std::unexpected(std::string("Give two or more pictures that are different photos."));
    }
    Decision decision;
    for (const auto& path : distinct) {
        auto photo = photoAt(path);
        if (!photo) {
            return std::unexpected(photo.error());
        }
        auto same = std::ranges::find(decision.photos, photo->sha256, &Photo::sha256);
        if (same != decision.photos.end()) {
            return std::unexpected(fmt::format("{} and {} are identical copies, so they cannot be "
                                               "different photos; {}.",
                                               same->path, path, kNothingRecorded));
        }
        decision.photos.push_back(std::move(*photo));
    }
    std::lock_guard guard(mutex_);
    if (damage_) {
        return std::unexpected(damageMessage(path_.value_or(""), *damage_));
    }
    int last = decisions_.empty() ? 0 : std::ranges::max(decisions_, {}, &Decision::id).id;
    decision.id = last + 1;
    decision.created = clock_();
    decisions_.push_back(decision);
    if (!save()) {
        decisions_.pop_back();
        return std::unexpected(fmt::format("The decision could not be saved in {}; {}.",
                                           path_.value_or(""), kNothingRecorded));
    }
    return decision;
}

std::expected<Decision, std::string> NotDuplicateStore::forget(int id) {
    std::lock_guard guard(mutex_);
    if (damage_) {
        return std::unexpected(damageMessage(path_.value_or(""), *damage_));
    }
    auto found = std::ranges::find(decisions_, id, &Decision::id);
    if (found == decisions_.end()) {
        return std::unexpected(fmt::format("There is no \"not duplicates\" decision {}.", id));
    }
    Decision forgotten = *found;
    decisions_.erase(found);
    if (!save()) {
        decisions_.insert(decisions_.begin(), forgotten);
        std::ranges::sort(decisions_, {}, &Decision::id);
        return std::unexpected(fmt::format("The change could not be saved in {}; nothing was "
                                           "forgotten.",
                                           path_.value_or("")));
    }
    return forgotten;
}

std::vector<Decision> NotDuplicateStore::all() const {
    std::lock_guard guard(mutex_);
    return decisions_;
}

std::set<std::int64_t> NotDuplicateStore::sizes() const {
    std::lock_guard guard(mutex_);
    std::set<std::int64_t> sizes;
    for (const auto& decision : decisions_) {
        for (const auto& photo : decision.photos) {
            sizes.insert(photo.size);
        }
    }
    return sizes;
}

std::vector<std::pair<std::string, std::string>> NotDuplicateStore::differentPairs() const {
    std::lock_guard guard(mutex_);
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const auto& decision : decisions_) {
        for (std::size_t x = 0; x < decision.photos.size(); ++x) {
            for (std::size_t y = x + 1; y < decision.photos.size(); ++y) {
                const auto& a = decision.photos[x].sha256;
                const auto& b = decision.photos[y].sha256;
                if (a != b) {
                    pairs.emplace_back(std::min(a, b), std::max(a, b));
                }
            }
        }
    }
    std::ranges::sort(pairs);
    auto [first, last] = std::ranges::unique(pairs);
    pairs.erase(first, last);
    return pairs;
}

bool NotDuplicateStore::save() const {
    // Never over a file that could not be read: it may hold the user's
    // decisions.
    if (!path_) {
        return true;
    }
    if (damage_) {
        return false;
    }
    return StoredDocument::write(*path_, encode(decisions_));
}

} // namespace brevant
