#pragma once

#include "engine/support/Date.hpp"

#include <cstdint>
#include <expected>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// The user's "not duplicates" decisions, kept across scans in
// not-duplicates.json: pictures the user said are different photos. They are
// known by their contents (SHA-256 and size), so a renamed or moved copy is
// still known, and every scan keeps them out of one similar group or series.
// Damage is handled as in the lock store: a file that cannot be read is never
// written over, and is moved aside only on the user's request.
class NotDuplicateStore {
public:
    struct Photo {
        std::string sha256;
        std::int64_t size = 0;
        // Where it was when the decision was made, for the listing only.
        std::string path;

        friend bool operator==(const Photo&, const Photo&) = default;
    };

    // Every two of the photos are different photos.
    struct Decision {
        int id = 0;
        std::vector<Photo> photos;
        Date created;

        friend bool operator==(const Decision&, const Decision&) = default;
    };

    using Clock = std::function<Date()>;

    // Reads the file when there is one; without it the store starts empty.
    // Without a path the decisions live in memory only.
    explicit NotDuplicateStore(std::optional<std::string> path, Clock clock = Date::now);

    NotDuplicateStore(const NotDuplicateStore&) = delete;
    NotDuplicateStore& operator=(const NotDuplicateStore&) = delete;
    NotDuplicateStore(NotDuplicateStore&&) = delete;
    NotDuplicateStore& operator=(NotDuplicateStore&&) = delete;
    ~NotDuplicateStore() = default;

    // The file's text: one JSON array of {"id", "photos": [{"sha256", "size",
    // "path"}], "created" (seconds since 2001)}; paths through path_text.
    [[nodiscard]] static std::string encode(const std::vector<Decision>& decisions);
    [[nodiscard]] static std::expected<std::vector<Decision>, std::string>
    decode(std::string_view document);

    [[nodiscard]] const std::optional<std::string>& path() const { return path_; }

    // Why the file could not be read, when it could not.
    [[nodiscard]] std::optional<std::string> damage() const;

    // On the user's request only: moves a damaged file aside to
    // "<name>.damaged-<seconds since 1970>" and starts with no decisions.
    [[nodiscard]] std::expected<std::string, std::string> setAside();

    [[nodiscard]] static std::string damageMessage(std::string_view shownPath,
                                                   std::string_view reason);

    // Reads the pictures at these paths (never through a final symbolic link)
    // and records that they are different photos. Refused, with nothing
    // recorded, when fewer than two pictures are given, one cannot be read,
    // two hold the same bytes, or the store is damaged.
    [[nodiscard]] std::expected<Decision, std::string>
    declare(const std::vector<std::string>& paths);

    // Removes the decision; refused when there is none of that id or the
    // store is damaged.
    [[nodiscard]] std::expected<Decision, std::string> forget(int id);

    [[nodiscard]] std::vector<Decision> all() const;

    // The sizes of the photos named in any decision: only pictures of these
    // sizes need their contents read to be told apart.
    [[nodiscard]] std::set<std::int64_t> sizes() const;

    // The pairs of contents the user said are different photos, each as
    // (smaller digest, larger digest), sorted.
    [[nodiscard]] std::vector<std::pair<std::string, std::string>> differentPairs() const;

private:
    void load();
    [[nodiscard]] bool save() const;

    std::optional<std::string> path_;
    Clock clock_;
    std::optional<std::string> damage_;
    mutable std::mutex mutex_;
    std::vector<Decision> decisions_;
};

} // namespace brevant
