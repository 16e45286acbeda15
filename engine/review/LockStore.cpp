#include "LockStore.hpp"

#include "engine/platform/ExclusiveRename.hpp"
#include "engine/support/AtomicFile.hpp"
#include "engine/support/Json.hpp"

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

bool matches(const LockStore::Lock& lock, const PhotoAsset& asset) {
    if (lock.path == asset.path) {
        return true;
    }
    auto identity = identityOf(asset);
    return identity && lock.identity == identity;
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
    std::string path = *path_;
    if (!FileSnapshot::read(path)) {
        return;
    }
    auto bytes = AtomicFile::read(path);
    if (!bytes) {
        moveAside(path);
        return;
    }
    std::string_view document(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    auto decoded = decode(document);
    if (!decoded) {
        moveAside(path);
        return;
    }
    locks_ = std::move(*decoded);
}

void LockStore::moveAside(const std::string& path) {
    auto seconds = static_cast<std::int64_t>(std::floor(clock_().unixSeconds()));
    std::string aside = fmt::format("{}.damaged-{}", path, seconds);
    if (platform::renameNoReplace(path, aside)) {
        movedAside_ = aside;
        return;
    }
    // Saving now would replace the file we could not move.
    path_.reset();
}

void LockStore::save() const {
    if (!path_) {
        return;
    }
    std::string text = encode(locks_);
    // The list in memory stays what counts for this session when the write
    // fails; the next change tries again.
    static_cast<void>(AtomicFile::write(
        *path_, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}));
}

std::vector<LockStore::Lock> LockStore::all() const {
    std::lock_guard guard(mutex_);
    return locks_;
}

bool LockStore::isLocked(const PhotoAsset& asset) const {
    std::lock_guard guard(mutex_);
    return std::ranges::any_of(locks_, [&](const Lock& lock) { return matches(lock, asset); });
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
