#include "LightroomCatalog.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogOpening.hpp"
#include "engine/catalogs/RootFolders.hpp"
#include "engine/catalogs/SQLiteReader.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/scan/PathRules.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <unordered_set>

namespace brevant {

namespace {

using Values = SQLiteValues;

constexpr std::string_view kRootFolderTable = "AgLibraryRootFolder";
constexpr std::string_view kRelativeColumn = "relativePathFromCatalog";

std::string withSlash(std::string path) {
    if (!path.ends_with('/')) {
        path.push_back('/');
    }
    return path;
}

std::vector<std::string> sidecarExtensions(std::string_view text) {
    std::vector<std::string> extensions;
    auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    std::size_t start = 0;
    while (start <= text.size()) {
        auto comma = text.find(',', start);
        auto end = comma == std::string_view::npos ? text.size() : comma;
        auto piece = text.substr(start, end - start);
        while (!piece.empty() && isSpace(piece.front())) {
            piece.remove_prefix(1);
        }
        while (!piece.empty() && isSpace(piece.back())) {
            piece.remove_suffix(1);
        }
        if (!piece.empty()) {
            extensions.emplace_back(piece);
        }
        start = end + 1;
    }
    return extensions;
}

LightroomRef refFromRow(const SQLiteRow& row) {
    LightroomRef ref;
    ref.imageID = Values::integer(Values::column(row, 0));
    ref.pick = Values::smallInteger(Values::column(row, 4));
    ref.rating = Values::smallInteger(Values::column(row, 5));
    ref.colorLabel = Values::text(Values::column(row, 6));
    ref.virtualCopies = Values::smallInteger(Values::column(row, 7));
    ref.isEdited = Values::integer(Values::column(row, 8)) > 0;
    ref.collections = Values::smallInteger(Values::column(row, 9));
    ref.keywords = Values::smallInteger(Values::column(row, 10));
    ref.sidecarExtensions = sidecarExtensions(Values::text(Values::column(row, 11)));
    return ref;
}

// Where the photos of the catalog are, and which roots they were found in.
class PhotoPlaces {
public:
    PhotoPlaces(std::string catalogFolder, std::map<std::string, std::string> relativeRoots)
        : catalogFolder_(std::move(catalogFolder))
        , relativeRoots_(std::move(relativeRoots)) {}

    LightroomPhoto place(const SQLiteRow& row) {
        std::string root = Values::text(Values::column(row, 1));
        std::string folder = Values::text(Values::column(row, 2));
        std::string name = Values::text(Values::column(row, 3));
        std::string joined = LightroomCatalog::joinedPath(root, folder, name);
        auto real = platform::realPath(joined);
        if (!real) {
            if (auto relative = relativeRoot(root)) {
                real = platform::realPath(LightroomCatalog::joinedPath(*relative, folder, name));
                if (real) {
                    root = std::move(*relative);
                }
            }
        }
        roots_.meet(root);
        return {real.value_or(joined), real.has_value(), refFromRow(row)};
    }

    std::vector<std::string> takeRootFolders() { return roots_.take(); }

private:
    std::optional<std::string> relativeRoot(const std::string& root) const {
        auto it = relativeRoots_.find(root);
        if (it == relativeRoots_.end()) {
            return std::nullopt;
        }
        return withSlash(catalogFolder_) + it->second;
    }

    std::string catalogFolder_;
    std::map<std::string, std::string> relativeRoots_;
    RootFolders roots_;
};

// Each root's place relative to the catalog, by its absolute path, where
// the catalog records one.
std::expected<std::map<std::string, std::string>, CatalogReadError>
relativeRoots(const SQLiteReader& reader, const CatalogLayout::Columns& columns) {
    std::map<std::string, std::string> roots;
    auto table = columns.find(kRootFolderTable);
    if (table == columns.end() || !table->second.contains(std::string(kRelativeColumn))) {
        return roots;
    }
    auto rows = reader.rows(
        fmt::format("SELECT absolutePath, {} FROM {}", kRelativeColumn, kRootFolderTable));
    if (!rows) {
        return std::unexpected(rows.error());
    }
    for (const auto& row : *rows) {
        std::string relative = Values::text(Values::column(row, 1));
        if (!relative.empty()) {
            roots.try_emplace(Values::text(Values::column(row, 0)), std::move(relative));
        }
    }
    return roots;
}

std::string folderOf(const std::string& catalog) {
    std::string parent = PathRules::parentFolder(catalog);
    return parent.empty() ? "." : parent;
}

} // namespace

std::vector<LightroomPhoto> LightroomCatalog::missing() const {
    std::vector<LightroomPhoto> result;
    std::ranges::copy_if(photos, std::back_inserter(result),
                         [](const LightroomPhoto& photo) { return !photo.exists; });
    return result;
}

const std::set<std::string, std::less<>>& LightroomCatalog::testedSchemaVersions() {
    static const std::set<std::string, std::less<>> versions = {"1504001"};
    return versions;
}

bool LightroomCatalog::isTestedVersion() const {
    return testedSchemaVersions().contains(schemaVersion);
}

std::expected<LightroomCatalog, CatalogReadError> LightroomCatalog::read(const std::string& url) {
    std::string path = PathNames::withoutTrailingSlashes(url);
    auto extension =
        PathRules::asciiLowercased(PathRules::extension(PathRules::lastComponent(path)));
    if (extension != kExtension) {
        return std::unexpected(notACatalog());
    }
    auto opened = CatalogOpening::open(
        path, CatalogApplication::lightroom, requiredColumns(),
        "SELECT value FROM Adobe_variablesTable WHERE name = 'Adobe_DBVersion'");
    if (!opened) {
        return std::unexpected(opened.error());
    }
    LightroomCatalog catalog{url};
    catalog.schemaVersion = std::move(opened->version);
    auto rows = opened->reader.rows(photosQuery());
    if (!rows) {
        return std::unexpected(rows.error());
    }
    auto relative = relativeRoots(opened->reader, opened->columns);
    if (!relative) {
        return std::unexpected(relative.error());
    }
    PhotoPlaces places(folderOf(path), std::move(*relative));
    CatalogOpening::placeRows(catalog, *rows, places);
    return catalog;
}

bool LightroomCatalog::isOpen(const std::string& url) {
    return isOpen(url, platform::runningApplications);
}

bool LightroomCatalog::isOpen(const std::string& url, const RunningApplications& running) {
    return ApplicationCheck::isOpen(PathNames::withoutTrailingSlashes(url) +
                                        std::string(kLockSuffix),
                                    {kBundlePrefix}, running);
}

std::vector<std::string> LightroomCatalog::defaultCatalogs() {
    return catalogsIn(platform::homeFolder() + "/Pictures/Lightroom");
}

std::vector<std::string> LightroomCatalog::catalogsIn(const std::string& folder) {
    return CatalogChoice::catalogsIn(folder, kExtension, false);
}

CatalogChoice LightroomCatalog::choose(const std::string& folder) {
    return CatalogChoice::choose(
        catalogsIn(folder),
        CatalogKindTexts::of(CatalogApplication::lightroom).noCatalogText(folder));
}

std::string LightroomCatalog::joinedPath(std::string_view root, std::string_view folder,
                                         std::string_view name) {
    std::string path = withSlash(std::string(root));
    path += folder;
    path = withSlash(std::move(path));
    path += name;
    return path;
}

const std::vector<CatalogLayout::Table>& LightroomCatalog::requiredColumns() {
    static const std::vector<CatalogLayout::Table> tables = {
        {"Adobe_images", {"id_local", "rootFile", "masterImage", "pick", "rating", "colorLabels"}},
        {"AgLibraryFile", {"id_local", "folder", "idx_filename", "sidecarExtensions"}},
        {"AgLibraryFolder", {"id_local", "rootFolder", "pathFromRoot"}},
        {"AgLibraryRootFolder", {"id_local", "absolutePath"}},
        {"Adobe_imageDevelopSettings", {"image", "hasDevelopAdjustmentsEx"}},
        {"AgLibraryCollectionImage", {"image", "collection"}},
        {"AgLibraryKeywordImage", {"image", "tag"}},
        {"Adobe_variablesTable", {"name", "value"}},
    };
    return tables;
}

const std::string& LightroomCatalog::photosQuery() {
    static const std::string query =
        R"sql(SELECT i.id_local, r.absolutePath, f.pathFromRoot, lf.idx_filename,
       COALESCE(i.pick, 0), COALESCE(i.rating, 0), COALESCE(i.colorLabels, ''),
       (SELECT COUNT(*) FROM Adobe_images v WHERE v.masterImage = i.id_local),
       (SELECT COUNT(*) FROM Adobe_imageDevelopSettings d
          WHERE d.hasDevelopAdjustmentsEx > 0
            AND (d.image = i.id_local OR d.image IN (SELECT v.id_local FROM Adobe_images v WHERE v.masterImage = i.id_local))),
       (SELECT COUNT(*) FROM AgLibraryCollectionImage c
          WHERE c.image = i.id_local OR c.image IN (SELECT v.id_local FROM Adobe_images v WHERE v.masterImage = i.id_local)),
       (SELECT COUNT(*) FROM AgLibraryKeywordImage k
          WHERE k.image = i.id_local OR k.image IN (SELECT v.id_local FROM Adobe_images v WHERE v.masterImage = i.id_local)),
       COALESCE(lf.sidecarExtensions, '')
FROM Adobe_images i
JOIN AgLibraryFile lf ON lf.id_local = i.rootFile
JOIN AgLibraryFolder f ON f.id_local = lf.folder
JOIN AgLibraryRootFolder r ON r.id_local = f.rootFolder
WHERE i.masterImage IS NULL
ORDER BY i.id_local)sql";
    return query;
}

CatalogReadError LightroomCatalog::notACatalog() {
    return CatalogReadError::notACatalog(
        CatalogKindTexts::of(CatalogApplication::lightroom).notACatalogText());
}

} // namespace brevant
