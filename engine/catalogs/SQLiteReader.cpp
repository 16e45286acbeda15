#include "SQLiteReader.hpp"

#include "engine/scan/FileSnapshot.hpp"

#include <sqlite3.h>

#include <fmt/format.h>

namespace brevant {

namespace {

bool isUnreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

std::string escapedPath(const std::string& path) {
    std::string escaped;
    escaped.reserve(path.size());
    for (char c : path) {
        auto byte = static_cast<unsigned char>(c);
        if (isUnreserved(byte) || c == '/') {
            escaped.push_back(c);
        } else {
            escaped += fmt::format("%{:02X}", byte);
        }
    }
    return escaped;
}

} // namespace

void SQLiteReader::Close::operator()(sqlite3* db) const {
    sqlite3_close_v2(db);
}

bool SQLiteReader::writeAheadLogIsEmpty(const std::string& path) {
    auto log = FileSnapshot::read(path + "-wal");
    return !log || log->size == 0;
}

std::string SQLiteReader::uri(const std::string& path, bool immutable) {
    // An empty authority keeps a path that begins with "//" from being read
    // as a host name.
    std::string prefix = path.starts_with('/') ? "file://" : "file:";
    return prefix + escapedPath(path) + (immutable ? "?mode=ro&immutable=1" : "?mode=ro");
}

std::expected<SQLiteReader, CatalogReadError>
SQLiteReader::open(const std::string& path, std::optional<bool> immutable, std::string busy) {
    if (auto status = FileSnapshot::read(path); status && status->isSymbolicLink) {
        return std::unexpected(CatalogReadError::unreadable(symbolicLinkMessage()));
    }
    bool isImmutable = immutable.value_or(writeAheadLogIsEmpty(path));
    sqlite3* handle = nullptr;
    int result = sqlite3_open_v2(uri(path, isImmutable).c_str(), &handle, kOpenFlags, nullptr);
    std::unique_ptr<sqlite3, Close> db(handle);
    if (result != SQLITE_OK || handle == nullptr) {
        return std::unexpected(CatalogReadError::unreadable(
            handle != nullptr ? sqlite3_errmsg(handle) : couldNotOpenMessage()));
    }
    sqlite3_busy_timeout(handle, kBusyTimeoutMilliseconds);
    return SQLiteReader(std::move(db), std::move(busy), isImmutable);
}

std::expected<std::vector<SQLiteRow>, CatalogReadError>
SQLiteReader::rows(const std::string& sql) const {
    auto rows = SQLiteStatement::rows(db_.get(), sql);
    if (!rows) {
        // A lock met while preparing (SQLite reads the schema then) is the
        // same lock as one met while stepping.
        bool busy = rows.error().code == SQLiteStatement::kBusy;
        return std::unexpected(CatalogReadError::unreadable(busy ? busy_ : rows.error().message));
    }
    return std::move(*rows);
}

const std::string& SQLiteReader::couldNotOpenMessage() {
    static const std::string text = "it could not be opened";
    return text;
}

const std::string& SQLiteReader::symbolicLinkMessage() {
    static const std::string text = "it is a symbolic link; choose the catalog itself, not a link "
                                    "to it";
    return text;
}

} // namespace brevant
