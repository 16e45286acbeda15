#include "CaptureOneCatalog.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogOpening.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/catalogs/RootFolders.hpp"
#include "engine/catalogs/SQLiteReader.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/scan/PathRules.hpp"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <unordered_set>

namespace brevant {

namespace {

const std::string kVersionQuery = "SELECT ZVERSION FROM ZVERSIONINFO ORDER BY Z_PK DESC LIMIT 1";

using Values = SQLiteValues;

std::vector<int> colorTags(std::string_view list) {
    std::vector<int> tags;
    std::size_t start = 0;
    while (start < list.size()) {
        auto comma = list.find(',', start);
        auto end = comma == std::string_view::npos ? list.size() : comma;
        tags.push_back(
            Values::smallInteger(SQLiteValue(std::string(list.substr(start, end - start)))));
        start = end + 1;
    }
    return tags;
}

CaptureOneRef refFromRow(const SQLiteRow& row) {
    CaptureOneRef ref;
    ref.imageID = Values::integer(Values::column(row, 0));
    ref.variantID = Values::integer(Values::column(row, 6));
    ref.variants = Values::smallInteger(Values::column(row, 7));
    ref.isEdited = Values::integer(Values::column(row, 8)) > 0;
    ref.rating = Values::smallInteger(Values::column(row, 9));
    ref.colorTags = colorTags(Values::text(Values::column(row, 10)));
    ref.keywords = Values::smallInteger(Values::column(row, 11));
    ref.albums = Values::smallInteger(Values::column(row, 12));
    return ref;
}

// Places each image and collects the folders met.
class PhotoPlaces {
public:
    explicit PhotoPlaces(std::string package)
        : package_(std::move(package)) {}

    CaptureOnePhoto place(const SQLiteRow& row) {
        bool isRelative = Values::integer(Values::column(row, 3)) == 1;
        std::string root = isRelative ? package_ : Values::text(Values::column(row, 1));
        std::string relative = Values::text(Values::column(row, 2));
        std::string name = Values::text(Values::column(row, 4));
        std::string joined = LightroomCatalog::joinedPath(root, relative, name);
        auto real = platform::realPath(joined);
        roots_.meet(PathRules::parentFolder(joined));
        bool isTrashed = Values::integer(Values::column(row, 5)) != 0;
        return {real.value_or(joined), real.has_value(), isTrashed, refFromRow(row)};
    }

    std::vector<std::string> takeRootFolders() { return roots_.take(); }

private:
    std::string package_;
    RootFolders roots_;
};

} // namespace

std::vector<CaptureOnePhoto> CaptureOneCatalog::missing() const {
    std::vector<CaptureOnePhoto> result;
    std::ranges::copy_if(photos, std::back_inserter(result),
                         [](const CaptureOnePhoto& photo) { return !photo.exists; });
    return result;
}

const std::set<std::string, std::less<>>& CaptureOneCatalog::testedSchemaVersions() {
    static const std::set<std::string, std::less<>> versions = {"160800"};
    return versions;
}

bool CaptureOneCatalog::isTestedVersion() const {
    return testedSchemaVersions().contains(schemaVersion);
}

std::optional<std::string> CaptureOneCatalog::database(const std::string& package) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::symlink_status(package, error).type() != fs::file_type::directory) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (fs::directory_iterator it(package, error), end; !error && it != end; it.increment(error)) {
        std::string name = it->path().filename().string();
        std::error_code typeError;
        if (PathRules::asciiLowercased(PathRules::extension(name)) == kDatabaseExtension &&
            it->symlink_status(typeError).type() == fs::file_type::regular) {
            names.push_back(std::move(name));
        }
    }
    if (names.empty()) {
        return std::nullopt;
    }
    return PathNames::withoutTrailingSlashes(package) + "/" + std::ranges::min(names);
}

std::expected<CaptureOneCatalog, CatalogReadError> CaptureOneCatalog::read(const std::string& url) {
    std::string package = PathNames::withoutTrailingSlashes(url);
    auto extension =
        PathRules::asciiLowercased(PathRules::extension(PathRules::lastComponent(package)));
    auto databaseFile = extension == kExtension ? database(package) : std::nullopt;
    if (!databaseFile) {
        return std::unexpected(notACatalog());
    }
    auto opened = CatalogOpening::open(*databaseFile, CatalogApplication::captureOne,
                                       requiredColumns(), kVersionQuery);
    if (!opened) {
        return std::unexpected(opened.error());
    }
    CaptureOneCatalog catalog{url, *databaseFile};
    catalog.schemaVersion = std::move(opened->version);
    auto rows = opened->reader.rows(photosQuery());
    if (!rows) {
        return std::unexpected(rows.error());
    }
    PhotoPlaces places(package);
    CatalogOpening::placeRows(catalog, *rows, places);
    return catalog;
}

bool CaptureOneCatalog::isOpen(const std::string& url) {
    return isOpen(url, platform::runningApplications);
}

bool CaptureOneCatalog::isOpen(const std::string& url, const RunningApplications& running) {
    return ApplicationCheck::isOpen(PathNames::withoutTrailingSlashes(url) + "/" +
                                        std::string(kLockFileName),
                                    {kBundlePrefixes.begin(), kBundlePrefixes.end()}, running);
}

std::vector<std::string> CaptureOneCatalog::defaultCatalogs() {
    return catalogsIn(platform::homeFolder() + "/Pictures");
}

std::vector<std::string> CaptureOneCatalog::catalogsIn(const std::string& folder) {
    return CatalogChoice::catalogsIn(folder, kExtension, true);
}

CatalogChoice CaptureOneCatalog::choose(const std::string& folder) {
    return CatalogChoice::choose(
        catalogsIn(folder),
        CatalogKindTexts::of(CatalogApplication::captureOne).noCatalogText(folder));
}

const std::vector<CatalogLayout::Table>& CaptureOneCatalog::requiredColumns() {
    static const std::vector<CatalogLayout::Table> tables = {
        {"ZIMAGE", {"Z_PK", "ZIMAGEFILENAME", "ZIMAGELOCATION", "ZISTRASHED"}},
        {"ZPATHLOCATION", {"Z_PK", "ZMACROOT", "ZRELATIVEPATH", "ZISRELATIVE"}},
        {"ZVARIANT",
         {"Z_PK", "ZIMAGE", "ZISMODIFIED", "ZADJUSTMENTLAYER", "ZCOMBINEDSETTINGS",
          "ZLASTMETADATAMODIFICATIONDATE"}},
        {"ZVARIANTLAYER", {"Z_PK", "ZMETADATA"}},
        {"ZVARIANTMETADATA", {"Z_PK", "ZBASIC_RATING", "ZCOLOR_TAG_INDEX", "ZCONTENT_KEYWORDS"}},
        {"ZCOLLECTION", {"Z_PK", "Z_ENT", "ZPARENT"}},
        {"ZIMAGEINCOLLECTION", {"ZIMAGE", "ZCOLLECTION"}},
        {"ZVARIANTINCOLLECTION", {"ZVARIANT", "ZCOLLECTION"}},
        {"ZVERSIONINFO", {"Z_PK", "ZVERSION"}},
    };
    return tables;
}

const std::string& CaptureOneCatalog::photosQuery() {
    static const std::string query = [] {
        // Only albums count, and not those inside a parent of the excluded
        // entity.
        std::string albumFilter = fmt::format(
            "JOIN ZCOLLECTION c ON c.Z_PK = x.ZCOLLECTION LEFT JOIN ZCOLLECTION parent ON "
            "parent.Z_PK = c.ZPARENT\nWHERE c.Z_ENT = {} AND COALESCE(parent.Z_ENT, 0) != {}",
            kAlbumEntity, kExcludedParentEntity);
        std::string metadataJoin =
            "FROM ZVARIANT v JOIN ZVARIANTLAYER l ON l.Z_PK = v.ZCOMBINEDSETTINGS\n"
            "JOIN ZVARIANTMETADATA m ON m.Z_PK = l.ZMETADATA WHERE v.ZIMAGE = i.Z_PK";
        return fmt::format(
            "SELECT i.Z_PK, p.ZMACROOT, p.ZRELATIVEPATH, COALESCE(p.ZISRELATIVE, 0), "
            "i.ZIMAGEFILENAME, COALESCE(i.ZISTRASHED, 0),\n"
            "       (SELECT MIN(v.Z_PK) FROM ZVARIANT v WHERE v.ZIMAGE = i.Z_PK),\n"
            "       (SELECT COUNT(*) FROM ZVARIANT v WHERE v.ZIMAGE = i.Z_PK),\n"
            "       (SELECT COUNT(*) FROM ZVARIANT v WHERE v.ZIMAGE = i.Z_PK AND v.ZISMODIFIED = "
            "1),\n"
            "       (SELECT MAX(COALESCE(m.ZBASIC_RATING, 0)) {0}),\n"
            "       (SELECT group_concat(COALESCE(m.ZCOLOR_TAG_INDEX, 0)) {0}),\n"
            "       (SELECT COUNT(*) {0} AND length(COALESCE(m.ZCONTENT_KEYWORDS, '')) > 0),\n"
            "       (SELECT COUNT(*) FROM ZIMAGEINCOLLECTION x {1} AND x.ZIMAGE = i.Z_PK)\n"
            "     + (SELECT COUNT(*) FROM ZVARIANTINCOLLECTION x {1}\n"
            "          AND x.ZVARIANT IN (SELECT v.Z_PK FROM ZVARIANT v WHERE v.ZIMAGE = i.Z_PK))\n"
            "FROM ZIMAGE i JOIN ZPATHLOCATION p ON p.Z_PK = i.ZIMAGELOCATION\n"
            "ORDER BY i.Z_PK",
            metadataJoin, albumFilter);
    }();
    return query;
}

CatalogReadError CaptureOneCatalog::notACatalog() {
    return CatalogReadError::notACatalog(
        CatalogKindTexts::of(CatalogApplication::captureOne).notACatalogText());
}

} // namespace brevant
