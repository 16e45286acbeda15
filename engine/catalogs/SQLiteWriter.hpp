#pragma once

#include "engine/catalogs/SQLiteRow.hpp"

#include <cstdint>
#include <expected>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;

namespace brevant {

// A read-write handle on an existing catalog database for the short changes
// the markers make. It keeps no transaction state: callers run "BEGIN
// IMMEDIATE", "COMMIT" and "ROLLBACK" themselves. Closed when the object
// goes away; used by one task at a time.
class SQLiteWriter {
public:
    // The error of every write-side operation; the caller puts its own
    // prefix before `description`.
    struct Failure {
        std::string description;

        friend bool operator==(const Failure&, const Failure&) = default;
    };

    // SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX: never create, so a missing
    // file fails.
    static constexpr int kOpenFlags = 0x2 | 0x8000;
    static constexpr int kBusyTimeoutMilliseconds = 3000;

    // A final symbolic link is never opened.
    [[nodiscard]] static std::expected<SQLiteWriter, Failure> open(const std::string& path);

    // All rows of one statement; any failure, a lock included, carries
    // SQLite's message.
    [[nodiscard]] std::expected<std::vector<SQLiteRow>, Failure> rows(const std::string& sql) const;

    // The first column of the first row as an integer; nothing when there is
    // no row or no value.
    [[nodiscard]] std::expected<std::optional<std::int64_t>, Failure>
    firstInteger(const std::string& sql) const;

    // The text as an SQL string literal, quotes doubled: for names the
    // statements carry, such as a tag's.
    [[nodiscard]] static std::string quoted(std::string_view text);

    // Opens a second existing database on this connection under `name`, so
    // that one transaction covers both. Outside a transaction only; a final
    // symbolic link is never attached, and a missing file fails.
    [[nodiscard]] std::expected<void, Failure> attach(const std::string& path,
                                                      const std::string& name) const;

    // Executes the statement text and answers the number of rows that
    // statement changed. Callers check the count.
    [[nodiscard]] std::expected<std::int64_t, Failure> run(const std::string& sql) const;

private:
    struct Close {
        void operator()(sqlite3* db) const;
    };

    explicit SQLiteWriter(std::unique_ptr<sqlite3, Close> db)
        : db_(std::move(db)) {}

    std::unique_ptr<sqlite3, Close> db_;
};

void PrintTo(const SQLiteWriter::Failure& failure, std::ostream* os);

} // namespace brevant
