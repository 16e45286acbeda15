#include "DigikamCatalog.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogOpening.hpp"
#include "engine/catalogs/RootFolders.hpp"
#include "engine/catalogs/SQLiteReader.hpp"
#include "engine/catalogs/TagMarkRecord.hpp"
#include "engine/platform/ConfigFiles.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PathRules.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <map>
#include <unordered_set>

namespace brevant {

namespace {

const std::string kVersionQuery = "SELECT value FROM Settings WHERE keyword = 'DBVersion'";

using Values = SQLiteValues;

int hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// A query value as digiKam's URLs write it: "%2F" is "/".
std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '%' && index + 2 < text.size()) {
            int high = hexDigit(text[index + 1]);
            int low = hexDigit(text[index + 2]);
            if (high >= 0 && low >= 0) {
                decoded.push_back(static_cast<char>((high << 4) | low));
                index += 2;
                continue;
            }
        }
        decoded.push_back(text[index]);
    }
    return decoded;
}

// The first value of `key` in the query of an identifier such as
// "volumeid:?uuid=…&fileuuid=…".
std::optional<std::string> queryValue(std::string_view identifier, std::string_view key) {
    auto question = identifier.find('?');
    if (question == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view query = identifier.substr(question + 1);
    while (!query.empty()) {
        auto amp = query.find('&');
        std::string_view item = query.substr(0, amp);
        auto equals = item.find('=');
        if (equals != std::string_view::npos && item.substr(0, equals) == key) {
            return percentDecoded(item.substr(equals + 1));
        }
        if (amp == std::string_view::npos) {
            break;
        }
        query.remove_prefix(amp + 1);
    }
    return std::nullopt;
}

// A folder and a path below it that begins with "/" (or is empty).
std::string joined(std::string_view folder, std::string_view below) {
    std::string path = PathNames::withoutTrailingSlashes(std::string(folder));
    if (path == "/") {
        path.clear();
    }
    if (below.empty() || below == "/") {
        return path.empty() ? "/" : path;
    }
    if (!below.starts_with('/')) {
        path += '/';
    }
    return path + std::string(below);
}

// Places each item under its album root and collects the folders met. Each
// root is resolved to today's mount once.
class PhotoPlaces {
public:
    explicit PhotoPlaces(const platform::VolumeMounts& mounts)
        : mounts_(mounts) {}

    DigikamPhoto place(const SQLiteRow& row) {
        DigikamPhoto photo;
        photo.ref.imageID = Values::integer(Values::column(row, 0));
        photo.ref.rating = Values::smallInteger(Values::column(row, 6));
        photo.ref.pickLabel = Values::smallInteger(Values::column(row, 7));
        photo.ref.colorLabel = Values::smallInteger(Values::column(row, 8));
        photo.ref.tags = Values::smallInteger(Values::column(row, 9));
        photo.isTagged = Values::integer(Values::column(row, 10)) != 0;
        auto root =
            rootOf(Values::integer(Values::column(row, 1)), Values::text(Values::column(row, 2)),
                   Values::text(Values::column(row, 3)));
        std::string relative = Values::text(Values::column(row, 4));
        std::string name = Values::text(Values::column(row, 5));
        if (!root) {
            // Where it lay on the drive, for the user to recognise.
            photo.path = joined(joined(Values::text(Values::column(row, 3)), relative), name);
            photo.notConnected = true;
            return photo;
        }
        std::string folder = joined(*root, relative);
        std::string joinedPath = joined(folder, name);
        auto real = platform::realPath(joinedPath);
        folders_.meet(folder);
        photo.path = real.value_or(joinedPath);
        photo.exists = real.has_value();
        return photo;
    }

    std::vector<std::string> takeRootFolders() { return folders_.take(); }

private:
    std::optional<std::string> rootOf(std::int64_t id, const std::string& identifier,
                                      const std::string& specificPath) {
        auto known = roots_.find(id);
        if (known == roots_.end()) {
            known = roots_.emplace(id, DigikamCatalog::rootPath(identifier, specificPath, mounts_))
                        .first;
        }
        return known->second;
    }

    const platform::VolumeMounts& mounts_;
    std::map<std::int64_t, std::optional<std::string>> roots_;
    RootFolders folders_;
};

std::string trimmed(std::string_view text) {
    auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    auto last = text.find_last_not_of(" \t\r");
    return std::string(text.substr(first, last - first + 1));
}

} // namespace

std::vector<DigikamPhoto> DigikamCatalog::missing() const {
    std::vector<DigikamPhoto> result;
    std::ranges::copy_if(photos, std::back_inserter(result), [](const DigikamPhoto& photo) {
        return !photo.exists && !photo.notConnected;
    });
    return result;
}

std::vector<DigikamPhoto> DigikamCatalog::notConnected() const {
    std::vector<DigikamPhoto> result;
    std::ranges::copy_if(photos, std::back_inserter(result),
                         [](const DigikamPhoto& photo) { return photo.notConnected; });
    return result;
}

// digiKam 7.9 (Debian 12) writes 15; digiKam 8 writes 16. digiKam 9.1 moved
// on to 17, which no test here has seen yet.
const std::set<std::string, std::less<>>& DigikamCatalog::testedSchemaVersions() {
    static const std::set<std::string, std::less<>> versions = {"15", "16"};
    return versions;
}

bool DigikamCatalog::isTestedVersion() const {
    return testedSchemaVersions().contains(schemaVersion);
}

std::optional<std::string> DigikamCatalog::rootPath(std::string_view identifier,
                                                    std::string_view specificPath,
                                                    const platform::VolumeMounts& mounts) {
    std::optional<std::string> top;
    if (identifier.starts_with("volumeid:")) {
        if (auto uuid = queryValue(identifier, "uuid")) {
            top = mounts.mountPoint(*uuid);
        } else {
            top = queryValue(identifier, "path");
        }
    } else if (identifier.starts_with("networkshareid:")) {
        top = queryValue(identifier, "mountpath");
    }
    if (!top || !top->starts_with('/')) {
        return std::nullopt;
    }
    return joined(*top, specificPath);
}

std::expected<DigikamCatalog, CatalogReadError> DigikamCatalog::read(const std::string& url) {
    return read(url, *platform::VolumeMounts::system());
}

std::expected<DigikamCatalog, CatalogReadError>
DigikamCatalog::read(const std::string& url, const platform::VolumeMounts& mounts) {
    if (PathRules::lastComponent(PathNames::withoutTrailingSlashes(url)) != kFileName) {
        return std::unexpected(notACatalog());
    }
    auto opened =
        CatalogOpening::open(url, CatalogApplication::digikam, requiredColumns(), kVersionQuery);
    if (!opened) {
        return std::unexpected(opened.error());
    }
    DigikamCatalog catalog{.url = url};
    catalog.schemaVersion = std::move(opened->version);
    auto rows = opened->reader.rows(photosQuery());
    if (!rows) {
        return std::unexpected(rows.error());
    }
    PhotoPlaces places(mounts);
    CatalogOpening::placeRows(catalog, *rows, places);
    return catalog;
}

bool DigikamCatalog::isOpen(const std::string& url) {
    return isOpen(url, platform::runningApplications);
}

bool DigikamCatalog::isOpen(const std::string& /*url*/, const RunningApplications& running) {
    return ApplicationCheck::isOpen({}, {kBundlePrefix}, running);
}

DigikamCatalog::Configured DigikamCatalog::configured(std::string_view configuration) {
    Configured result;
    bool inDatabase = false;
    while (!configuration.empty()) {
        auto end = configuration.find('\n');
        std::string line = trimmed(configuration.substr(0, end));
        configuration.remove_prefix(end == std::string_view::npos ? configuration.size() : end + 1);
        if (line.starts_with('[')) {
            inDatabase = line == "[Database Settings]";
            continue;
        }
        auto equals = line.find('=');
        if (!inDatabase || equals == std::string::npos) {
            continue;
        }
        std::string key = trimmed(std::string_view(line).substr(0, equals));
        std::string value = trimmed(std::string_view(line).substr(equals + 1));
        if (key == "Database Type") {
            result.type = value;
        } else if (key == "Database Name") {
            result.folder = value;
        }
    }
    return result;
}

CatalogChoice DigikamCatalog::choose(const std::string& folder) {
    return choose(folder, platform::configFile(kConfigurationFile));
}

CatalogChoice DigikamCatalog::choose(const std::string& folder,
                                     const std::optional<std::string>& configuration) {
    std::string where = PathNames::withoutTrailingSlashes(folder);
    bool isDefault = where == platform::homeFolder() + std::string(kDefaultFolder);
    if (isDefault && configuration) {
        auto said = configured(*configuration);
        if (said.type == "QMYSQL") {
            return {std::nullopt, mysqlSentence()};
        }
        if (said.type == "QSQLITE" && said.folder.starts_with('/')) {
            where = PathNames::withoutTrailingSlashes(said.folder);
        }
    }
    std::string database = joined(where, "/" + std::string(kFileName));
    auto snapshot = FileSnapshot::read(database);
    if (!snapshot) {
        return {std::nullopt,
                CatalogKindTexts::of(CatalogApplication::digikam).noCatalogText(where)};
    }
    return {database, std::nullopt};
}

const std::vector<CatalogLayout::Table>& DigikamCatalog::requiredColumns() {
    static const std::vector<CatalogLayout::Table> tables = {
        {"AlbumRoots", {"id", "identifier", "specificPath"}},
        {"Albums", {"id", "albumRoot", "relativePath"}},
        {"Images", {"id", "album", "name", "status"}},
        {"ImageInformation", {"imageid", "rating"}},
        {"Tags", {"id", "pid", "name"}},
        {"TagsTree", {"id", "pid"}},
        {"ImageTags", {"imageid", "tagid"}},
        {"Settings", {"keyword", "value"}},
    };
    return tables;
}

const std::string& DigikamCatalog::photosQuery() {
    static const std::string query = [] {
        // digiKam keeps pick and colour labels as tags of its own, under a
        // top-level tag of internal ones.
        std::string internalTags =
            fmt::format("SELECT id FROM Tags WHERE pid = 0 AND name = '{0}'\n"
                        "     UNION SELECT t.id FROM TagsTree t JOIN Tags r ON r.id = t.pid\n"
                        "       WHERE r.pid = 0 AND r.name = '{0}'",
                        kInternalTags);
        std::string labels = "FROM ImageTags x JOIN Tags t ON t.id = x.tagid\n"
                             "       WHERE x.imageid = i.id AND t.id IN (SELECT id FROM internal)";
        return fmt::format(
            "WITH internal AS ({0})\n"
            "SELECT i.id, r.id, COALESCE(r.identifier, ''), COALESCE(r.specificPath, ''), "
            "a.relativePath, i.name,\n"
            "       COALESCE(n.rating, -1),\n"
            "       (SELECT COALESCE(MAX(CASE t.name WHEN 'Pick Label Rejected' THEN 1\n"
            "          WHEN 'Pick Label Pending' THEN 2 WHEN 'Pick Label Accepted' THEN 3\n"
            "          ELSE 0 END), 0) {1}),\n"
            "       (SELECT COALESCE(MAX(CASE t.name WHEN 'Color Label Red' THEN 1\n"
            "          WHEN 'Color Label Orange' THEN 2 WHEN 'Color Label Yellow' THEN 3\n"
            "          WHEN 'Color Label Green' THEN 4 WHEN 'Color Label Blue' THEN 5\n"
            "          WHEN 'Color Label Magenta' THEN 6 WHEN 'Color Label Gray' THEN 7\n"
            "          WHEN 'Color Label Black' THEN 8 WHEN 'Color Label White' THEN 9\n"
            "          ELSE 0 END), 0) {1}),\n"
            "       (SELECT COUNT(*) FROM ImageTags x JOIN Tags t ON t.id = x.tagid\n"
            "          WHERE x.imageid = i.id AND t.id NOT IN (SELECT id FROM internal)\n"
            "          AND NOT (t.pid = 0 AND t.name = '{2}')),\n"
            "       EXISTS (SELECT 1 FROM ImageTags x JOIN Tags t ON t.id = x.tagid\n"
            "          WHERE x.imageid = i.id AND t.pid = 0 AND t.name = '{2}')\n"
            "FROM Images i JOIN Albums a ON a.id = i.album JOIN AlbumRoots r ON r.id = "
            "a.albumRoot\n"
            "LEFT JOIN ImageInformation n ON n.imageid = i.id\n"
            "WHERE i.status = {3}\n"
            "ORDER BY i.id",
            internalTags, labels, kDuplicatesTag, kVisible);
    }();
    return query;
}

CatalogReadError DigikamCatalog::notACatalog() {
    return CatalogReadError::notACatalog(
        CatalogKindTexts::of(CatalogApplication::digikam).notACatalogText());
}

const std::string& DigikamCatalog::mysqlSentence() {
    static const std::string text =
        "digiKam keeps this library in MySQL/MariaDB, which Brevant does not read. Only a "
        "digiKam library in SQLite (digikam4.db) can be scanned here.";
    return text;
}

} // namespace brevant
