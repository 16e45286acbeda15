#include "SQLiteWriter.hpp"

#include "engine/catalogs/SQLiteReader.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <sqlite3.h>

#include <ostream>

namespace brevant {

void SQLiteWriter::Close::operator()(sqlite3* db) const {
    sqlite3_close_v2(db);
}

std::expected<SQLiteWriter, SQLiteWriter::Failure> SQLiteWriter::open(const std::string& path) {
    if (auto status = FileSnapshot::read(path); status && status->isSymbolicLink) {
        return std::unexpected(Failure{SQLiteReader::symbolicLinkMessage()});
    }
    sqlite3* handle = nullptr;
    int result = sqlite3_open_v2(path.c_str(), &handle, kOpenFlags, nullptr);
    std::unique_ptr<sqlite3, Close> db(handle);
    if (result != SQLITE_OK || handle == nullptr) {
        return std::unexpected(Failure{handle != nullptr ? sqlite3_errmsg(handle)
                                                         : SQLiteReader::couldNotOpenMessage()});
    }
    sqlite3_busy_timeout(handle, kBusyTimeoutMilliseconds);
    return SQLiteWriter(std::move(db));
}

std::expected<std::vector<SQLiteRow>, SQLiteWriter::Failure>
SQLiteWriter::rows(const std::string& sql) const {
    auto rows = SQLiteStatement::rows(db_.get(), sql);
    if (!rows) {
        return std::unexpected(Failure{std::move(rows.error().message)});
    }
    return std::move(*rows);
}

std::expected<std::optional<std::int64_t>, SQLiteWriter::Failure>
SQLiteWriter::firstInteger(const std::string& sql) const {
    auto found = rows(sql);
    if (!found) {
        return std::unexpected(found.error());
    }
    if (found->empty() || !SQLiteValues::column(found->front(), 0)) {
        return std::nullopt;
    }
    return SQLiteValues::integer(SQLiteValues::column(found->front(), 0));
}

std::expected<std::int64_t, SQLiteWriter::Failure> SQLiteWriter::run(const std::string& sql) const {
    if (sqlite3_exec(db_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        return std::unexpected(Failure{sqlite3_errmsg(db_.get())});
    }
    return static_cast<std::int64_t>(sqlite3_changes64(db_.get()));
}

std::string SQLiteWriter::quoted(std::string_view text) {
    std::string literal = "'";
    for (char c : text) {
        literal += c;
        if (c == '\'') {
            literal += c;
        }
    }
    return literal + "'";
}

std::expected<void, SQLiteWriter::Failure> SQLiteWriter::attach(const std::string& path,
                                                                const std::string& name) const {
    auto status = FileSnapshot::read(path);
    if (!status) {
        return std::unexpected(Failure{SQLiteReader::couldNotOpenMessage()});
    }
    if (status->isSymbolicLink) {
        return std::unexpected(Failure{SQLiteReader::symbolicLinkMessage()});
    }
    if (auto attached = run("ATTACH DATABASE " + quoted(path) + " AS \"" + name + "\"");
        !attached) {
        return std::unexpected(attached.error());
    }
    return {};
}

void PrintTo(const SQLiteWriter::Failure& failure, std::ostream* os) {
    *os << "Failure(\"" << failure.description << "\")";
}

} // namespace brevant
