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
    // A file that is there but cannot be read (a symbolic link, a folder, no
    // permission) or reads but does not decode leaves the store damaged:
    // `damage` says why, the locks it would hold are unknown, and nothing is
    // ever saved over it; changes live in memory only until the user repairs
    // the file or sets it aside with setAside. Without a path the locks live
    // in memory only. The clock gives the creation dates and the seconds of
    // the set-aside name.
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

    // Why the file could not be read, when it could not; while it is
    // damaged no cleanup may run, since locked copies cannot be told.
    [[nodiscard]] std::optional<std::string> damage() const;

    // On the user's request only: moves a damaged file aside to
    // "<name>.damaged-<seconds since 1970>" (never over anything) and starts
    // with no locks, saving from then on. Answers where the file went, or
    // why it could not be moved (then nothing changed).
    [[nodiscard]] std::expected<std::string, std::string> setAside();

    // A sentence for display about a damaged store whose file is shown as
    // `shownPath`.
    [[nodiscard]] static std::string damageMessage(std::string_view shownPath,
                                                   std::string_view reason);

    [[nodiscard]] std::vector<Lock> all() const;

    // Locked by path, or by file identity: a lock follows a file given
    // another name on the same volume, and a new file put at a locked path
    // is locked too.
    [[nodiscard]] bool isLocked(const PhotoAsset& asset) const;
    [[nodiscard]] bool isLocked(const std::string& path, const FileIdentity& identity) const;

    // Locks the copy unless it is locked already; saves either way.
    void add(const PhotoAsset& asset);

    // Removes every lock that matches the copy by path or identity; saves.
    void remove(const PhotoAsset& asset);

private:
    void load();
    void save() const;

    std::optional<std::string> path_;
    Clock clock_;
    std::optional<std::string> damage_;
    mutable std::mutex mutex_;
    std::vector<Lock> locks_;
};

} // namespace brevant

template <> struct std::hash<brevant::LockStore::Lock> {
    std::size_t operator()(const brevant::LockStore::Lock& v) const noexcept {
        return brevant::hashing::all(v.path, v.identity, v.created.secondsSinceReferenceDate);
    }
};
