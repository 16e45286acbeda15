#pragma once

#include "engine/catalogs/CatalogReadError.hpp"
#include "engine/catalogs/SQLiteRow.hpp"

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;

namespace brevant {

// A read-only handle on a catalog database that never disturbs the
// application that owns it. Closed when the object goes away; used by one
// task at a time (opened without SQLite's own mutex).
class SQLiteReader {
public:
    // SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX.
    static constexpr int kOpenFlags = 0x1 | 0x40 | 0x8000;
    static constexpr int kBusyTimeoutMilliseconds = 3000;

    // Opens `path` for reading. Without an `immutable` answer the reader
    // decides by itself: an absent or empty "-wal" file means the main file
    // holds everything, so SQLite may skip all locking; a non-empty one holds
    // pages the application has not written back yet, and those are read
    // through normal locking. `busy` is the sentence reported when a lock
    // outlasts the busy timeout. A final symbolic link is never opened.
    [[nodiscard]] static std::expected<SQLiteReader, CatalogReadError>
    open(const std::string& path, std::optional<bool> immutable, std::string busy);

    // All rows of one statement. A lock held longer than the busy timeout
    // fails with the busy sentence instead of SQLite's lock message.
    [[nodiscard]] std::expected<std::vector<SQLiteRow>, CatalogReadError>
    rows(const std::string& sql) const;

    [[nodiscard]] bool isImmutable() const { return immutable_; }

    [[nodiscard]] const std::string& busy() const { return busy_; }

    // True when `path` + "-wal" is absent or empty.
    [[nodiscard]] static bool writeAheadLogIsEmpty(const std::string& path);

    // The "file:" URI that opens `path` read-only, and immutable if asked:
    // every byte of the path but unreserved ones and "/" is percent-escaped.
    [[nodiscard]] static std::string uri(const std::string& path, bool immutable);

    // The message when SQLite gave no handle at all.
    [[nodiscard]] static const std::string& couldNotOpenMessage();
    // The message for a catalog path that is a symbolic link.
    [[nodiscard]] static const std::string& symbolicLinkMessage();

private:
    struct Close {
        void operator()(sqlite3* db) const;
    };

    SQLiteReader(std::unique_ptr<sqlite3, Close> db, std::string busy, bool immutable)
        : db_(std::move(db))
        , busy_(std::move(busy))
        , immutable_(immutable) {}

    std::unique_ptr<sqlite3, Close> db_;
    std::string busy_;
    bool immutable_ = false;
};

} // namespace brevant
