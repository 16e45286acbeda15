#include "LockStore.hpp"

#include "engine/review/StoredDocument.hpp"
#include "engine/support/Json.hpp"
#include "engine/support/Texts.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace brevant {

namespace {

using json::Json;

// inode 0 is never a file's number: such an asset (a library item) has no
// identity to follow.
std::optional<FileIdentity> identityOf(const PhotoAsset& asset) {
    if (asset.snapshot.identity.inode == 0) {
        return std::nullopt;
    }
    return asset.snapshot.identity;
}

bool matches(const LockStore::Lock& lock, const std::string& path,
             const std::optional<FileIdentity>& identity) {
    return lock.path == path || (identity && lock.identity == identity);
}

bool matches(const LockStore::Lock& lock, const PhotoAsset& asset) {
    return matches(lock, asset.path, identityOf(asset));
}

std::uint64_t unsignedField(const Json& object, std::string_view key) {
    const Json& value = json::field(object, key);
    if (!value.is_number_unsigned()) {
        throw json::DecodeError(fmt::format("\"{}\" is not a whole number", key));
    }
    return value.get<std::uint64_t>();
}

LockStore::Lock decodeLock(const Json& object) {
    if (!object.is_object()) {
        throw json::DecodeError("a lock is not an object");
    }
    LockStore::Lock lock;
    const Json& path = json::field(object, "path");
    if (!path.is_string()) {
        throw json::DecodeError("\"path\" is not text");
    }
    lock.path = json::toText(path);
    if (json::has(object, "identity")) {
        const Json& identity = json::field(object, "identity");
        lock.identity =
            FileIdentity{unsignedField(identity, "device"), unsignedField(identity, "inode")};
    }
    const Json& created = json::field(object, "created");
    if (!created.is_number() || !std::isfinite(created.get<double>())) {
        throw json::DecodeError("\"created\" is not a date");
    }
    lock.created = Date{created.get<double>()};
    return lock;
}

} // namespace

LockStore::LockStore(std::optional<std::string> path, Clock clock)
    : path_(std::move(path))
    , clock_(clock ? std::move(clock) : Clock(Date::now)) {
    load();
}

std::string LockStore::encode(const std::vector<Lock>& locks) {
    Json array = Json::array();
    for (const auto& lock : locks) {
        Json object = {{"path", json::text(lock.path)}};
        if (lock.identity) {
            object["identity"] = *lock.identity;
        }
        object["created"] = json::date(lock.created);
        array.push_back(std::move(object));
    }
    return array.dump(2) + "\n";
}

std::expected<std::vector<LockStore::Lock>, std::string>
LockStore::decode(std::string_view document) {
    try {
        Json array = json::parse(document);
        if (!array.is_array()) {
            throw json::DecodeError("expected an array of locks");
        }
        std::vector<Lock> locks;
        locks.reserve(array.size());
        for (const auto& object : array) {
            locks.push_back(decodeLock(object));
        }
        return locks;
    } catch (const std::exception& e) {
        return std::unexpected(std::string("The lock file could not be read: ") + e.what());
    }
}

void LockStore::load() {
    if (!path_) {
        return;
    }
    auto document = StoredDocument::read(*path_);
    if (!document) {
        damage_ = document.error();
        return;
    }
    if (!*document) {
        return;
    }
    auto decoded = decode(**document);
    if (!decoded) {
        damage_ = decoded.error();
        return;
    }
    locks_ = std::move(*decoded);
}

std::optional<std::string> LockStore::damage() const {
    std::lock_guard guard(mutex_);
    return damage_;
}

std::expected<std::string, std::string> LockStore::setAside() {
    std::lock_guard guard(mutex_);
    if (!damage_ || !path_) {
        return std::unexpected(std::string("The lock file is not damaged; nothing was moved."));
    }
    auto seconds = static_cast<std::int64_t>(std::floor(clock_().unixSeconds()));
    auto aside = StoredDocument::setAside(*path_, seconds);
    if (!aside) {
        return std::unexpected(fmt::format(
            "The lock file could not be moved aside to {}; nothing was changed.", aside.error()));
    }
    damage_.reset();
    save();
    return aside;
}

std::string LockStore::damageMessage(std::string_view shownPath, std::string_view reason) {
    return fmt::format("The lock file {} cannot be read ({}), so {} cannot tell which copies you "
                       "locked, and no cleanup runs until it can. Repair the file, or set it "
                       "aside to start again without locks.",
                       shownPath, reason, texts::kApplication);
}

void LockStore::save() const {
    // Never over a file that could not be read: it may hold the user's
    // locks.
    if (!path_ || damage_) {
        return;
    }
    std::string text = encode(locks_);
    // The list in memory stays what counts for this session when the write
    // fails; the next change tries again.
    static_cast<void>(StoredDocument::write(*path_, text));
}

std::vector<LockStore::Lock> LockStore::all() const {
    std::lock_guard guard(mutex_);
    return locks_;
}

bool LockStore::isLocked(const PhotoAsset& asset) const {
    std::lock_guard guard(mutex_);
    return std::ranges::any_of(locks_, [&](const Lock& lock) { return matches(lock, asset); });
}

bool LockStore::isLocked(const std::string& path, const FileIdentity& identity) const {
    std::optional<FileIdentity> known;
    if (identity.inode != 0) {
        known = identity;
    }
    std::lock_guard guard(mutex_);
    return std::ranges::any_of(locks_,
                               [&](const Lock& lock) { return matches(lock, path, known); });
}

void LockStore::add(const PhotoAsset& asset) {
    std::lock_guard guard(mutex_);
    bool locked =
        std::ranges::any_of(locks_, [&](const Lock& lock) { return matches(lock, asset); });
    if (!locked) {
        locks_.push_back({asset.path, identityOf(asset), clock_()});
    }
    save();
}

void LockStore::remove(const PhotoAsset& asset) {
    std::lock_guard guard(mutex_);
    std::erase_if(locks_, [&](const Lock& lock) { return matches(lock, asset); });
    save();
}

} // namespace brevant
