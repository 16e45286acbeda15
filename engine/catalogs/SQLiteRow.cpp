#include "SQLiteRow.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>

namespace brevant {

namespace {

std::int64_t integerFromDouble(double value) {
    // Outside this range the conversion would be undefined.
    constexpr double kLimit = 9.2233720368547748e18;
    if (!std::isfinite(value) || value >= kLimit || value < -kLimit) {
        return 0;
    }
    return static_cast<std::int64_t>(value);
}

std::int64_t integerFromText(const std::string& text) {
    std::int64_t result = 0;
    const char* end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, result);
    if (error != std::errc() || stop != end || text.empty()) {
        return 0;
    }
    return result;
}

std::optional<SQLiteValue> columnValue(sqlite3_stmt* statement, int index) {
    switch (sqlite3_column_type(statement, index)) {
    case SQLITE_INTEGER:
        return SQLiteValue(static_cast<std::int64_t>(sqlite3_column_int64(statement, index)));
    case SQLITE_FLOAT:
        return SQLiteValue(sqlite3_column_double(statement, index));
    case SQLITE_TEXT: {
        const auto* text = sqlite3_column_text(statement, index);
        auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, index));
        return SQLiteValue(std::string(reinterpret_cast<const char*>(text), length));
    }
    default:
        return std::nullopt;
    }
}

struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

} // namespace

std::int64_t SQLiteValues::integer(const std::optional<SQLiteValue>& value) {
    if (!value) {
        return 0;
    }
    if (const auto* whole = std::get_if<std::int64_t>(&*value)) {
        return *whole;
    }
    if (const auto* number = std::get_if<double>(&*value)) {
        return integerFromDouble(*number);
    }
    return integerFromText(std::get<std::string>(*value));
}

int SQLiteValues::smallInteger(const std::optional<SQLiteValue>& value) {
    return static_cast<int>(std::clamp<std::int64_t>(
        integer(value), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::string SQLiteValues::text(const std::optional<SQLiteValue>& value) {
    if (!value) {
        return {};
    }
    if (const auto* text = std::get_if<std::string>(&*value)) {
        return *text;
    }
    return {};
}

std::optional<double> SQLiteValues::real(const std::optional<SQLiteValue>& value) {
    if (!value) {
        return std::nullopt;
    }
    if (const auto* number = std::get_if<double>(&*value)) {
        return *number;
    }
    if (const auto* whole = std::get_if<std::int64_t>(&*value)) {
        return static_cast<double>(*whole);
    }
    return std::nullopt;
}

const std::optional<SQLiteValue>& SQLiteValues::column(const SQLiteRow& row, std::size_t index) {
    static const std::optional<SQLiteValue> kNone;
    return index < row.size() ? row[index] : kNone;
}

std::expected<std::vector<SQLiteRow>, SQLiteStatement::Failure>
SQLiteStatement::rows(sqlite3* db, const std::string& sql) {
    sqlite3_stmt* prepared = nullptr;
    int result = sqlite3_prepare_v2(db, sql.c_str(), -1, &prepared, nullptr);
    if (result != SQLITE_OK) {
        return std::unexpected(Failure{result & 0xFF, sqlite3_errmsg(db)});
    }
    std::vector<SQLiteRow> rows;
    if (prepared == nullptr) {
        // Only white space or a comment: nothing to run.
        return rows;
    }
    std::unique_ptr<sqlite3_stmt, Finalize> statement(prepared);
    int columns = sqlite3_column_count(prepared);
    for (;;) {
        result = sqlite3_step(prepared);
        if (result == SQLITE_DONE) {
            return rows;
        }
        if (result != SQLITE_ROW) {
            // Formed before the statement is finalized, which may reset it.
            return std::unexpected(Failure{result & 0xFF, sqlite3_errmsg(db)});
        }
        SQLiteRow row;
        row.reserve(static_cast<std::size_t>(columns));
        for (int index = 0; index < columns; ++index) {
            row.push_back(columnValue(prepared, index));
        }
        rows.push_back(std::move(row));
    }
}

} // namespace brevant
