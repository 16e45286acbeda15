#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <variant>
#include <vector>

struct sqlite3;

namespace brevant {

// One value of a result column: TEXT, FLOAT or INTEGER. NULL and BLOB both
// read as no value.
using SQLiteValue = std::variant<std::int64_t, double, std::string>;

// One result row, a value per column in column order.
using SQLiteRow = std::vector<std::optional<SQLiteValue>>;

// Reading values out of rows, one at a time, the way catalogs store them:
// Lightroom keeps flags and stars as doubles, and some tables hold numbers
// as text.
struct SQLiteValues {
    // A 64-bit integer, a double (truncated) or a text that holds a whole
    // integer; 0 for anything else.
    [[nodiscard]] static std::int64_t integer(const std::optional<SQLiteValue>& value);

    // The integer clamped into an int: stars, labels and flags.
    [[nodiscard]] static int smallInteger(const std::optional<SQLiteValue>& value);

    // The text, or "" for a value that is not text.
    [[nodiscard]] static std::string text(const std::optional<SQLiteValue>& value);

    // A double or an integer as a double; nothing for no value or a text.
    [[nodiscard]] static std::optional<double> real(const std::optional<SQLiteValue>& value);

    // The column of a row, or no value when the row is shorter.
    [[nodiscard]] static const std::optional<SQLiteValue>& column(const SQLiteRow& row,
                                                                  std::size_t index);
};

// Runs one statement on an open connection and collects its rows. Shared by
// the reader and the writer, which phrase failures each their own way.
struct SQLiteStatement {
    struct Failure {
        // SQLite's primary result code (SQLITE_BUSY is 5).
        int code = 0;
        std::string message;
    };

    static constexpr int kBusy = 5;
    static constexpr int kRow = 100;
    static constexpr int kDone = 101;

    // Prepares the whole text, steps it to the end and finalizes it. The
    // message of a failure is taken before the statement is finalized.
    [[nodiscard]] static std::expected<std::vector<SQLiteRow>, Failure>
    rows(sqlite3* db, const std::string& sql);
};

} // namespace brevant
