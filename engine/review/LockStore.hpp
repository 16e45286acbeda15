#pragma once

#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/Hashing.hpp"

#include <cstddef>
#include <expected>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// The user's locks ("always keep this copy"), kept across scans in
// keep-locks.json. Shared by every session of the application and read from
// scanning and planning tasks while the window changes it: every access
// holds the one lock, and each change is saved inside the same critical
// section, so the file never lags behind an answer already given.
class LockStore {
public:
    struct Lock {
        std::string path;
        // Absent when the copy had no file identity (a library item).
        std::optional<FileIdentity> identity;
        Date created;

        friend bool operator==(const Lock&, const Lock&) = default;
    };

    using Clock = std::function<Date()>;

    // Reads the file when there is one; without it the store starts empty.
    // A file that is there but cannot be read, or reads but does not
    // decode, is moved aside to "<name>.damaged-<seconds since 1970>" and
    // the store starts empty. When that name is taken too (or the move
    // fails) nothing is moved and this store keeps its locks in memory only,
    // so neither file is ever written over. Without a path the locks live in
    // memory only. The clock gives the creation dates and the seconds of the
    // damaged name.
    explicit LockStore(std::optional<std::string> path, Clock clock = Date::now);

    LockStore(const LockStore&) = delete;
    LockStore& operator=(const LockStore&) = delete;
    LockStore(LockStore&&) = delete;
    LockStore& operator=(LockStore&&) = delete;
    ~LockStore() = default;

    // The file's text: one JSON array of {"path", "identity" (left out when
    // absent), "created" (seconds since 2001)}; paths through path_text.
    [[nodiscard]] static std::string encode(const std::vector<Lock>& locks);
    // Any bytes give the locks or the reason they cannot be read.
    [[nodiscard]] static std::expected<std::vector<Lock>, std::string>
    decode(std::string_view document);

    // Where the locks are saved; nothing when they live in memory only.
    [[nodiscard]] const std::optional<std::string>& path() const { return path_; }

    // Where a damaged file was moved at start, if one was.
    [[nodiscard]] const std::optional<std::string>& movedAside() const { return movedAside_; }

    [[nodiscard]] std::vector<Lock> all() const;

    // Locked by path, or by file identity: a lock follows a file given
    // another name on the same volume, and a new file put at a locked path
    // is locked too.
    [[nodiscard]] bool isLocked(const PhotoAsset& asset) const;

    // Locks the copy unless it is locked already; saves either way.
    void add(const PhotoAsset& asset);

    // Removes every lock that matches the copy by path or identity; saves.
    void remove(const PhotoAsset& asset);

private:
    void load();
    void moveAside(const std::string& path);
    void save() const;

    std::optional<std::string> path_;
    Clock clock_;
    std::optional<std::string> movedAside_;
    mutable std::mutex mutex_;
    std::vector<Lock> locks_;
};

} // namespace brevant

template <> struct std::hash<brevant::LockStore::Lock> {
    std::size_t operator()(const brevant::LockStore::Lock& v) const noexcept {
        return brevant::hashing::all(v.path, v.identity, v.created.secondsSinceReferenceDate);
    }
};
