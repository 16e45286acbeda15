#pragma once

#include "engine/catalogs/ApplicationCheck.hpp"
#include "engine/catalogs/CatalogChoice.hpp"
#include "engine/catalogs/CatalogLayout.hpp"
#include "engine/catalogs/CatalogReadError.hpp"
#include "engine/scan/CaptureOneRef.hpp"

#include <array>
#include <expected>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// One image of a Capture One catalog.
struct CaptureOnePhoto {
    // The file's path resolved through the real-path call, or the joined
    // path as recorded when that failed.
    std::string path;
    bool exists = false;
    // In Capture One's own Trash.
    bool isTrashed = false;
    CaptureOneRef ref;

    friend bool operator==(const CaptureOnePhoto&, const CaptureOnePhoto&) = default;
};

// A Capture One catalog: a ".cocatalog" package folder holding a SQLite
// database with the extension "cocatalogdb". Read, never changed, here;
// reading works while Capture One is open.
struct CaptureOneCatalog {
    using ReadError = CatalogReadError;
    using RunningApplications = ApplicationCheck::RunningApplications;

    // The package.
    std::string url;
    // The database file inside it.
    std::string databaseURL;
    // The newest ZVERSIONINFO.ZVERSION, or "unknown".
    std::string schemaVersion;
    // In ascending Z_PK.
    std::vector<CaptureOnePhoto> photos;
    // The distinct folders that hold the catalog's files, resolved where
    // they exist.
    std::vector<std::string> rootFolders;

    friend bool operator==(const CaptureOneCatalog&, const CaptureOneCatalog&) = default;

    [[nodiscard]] std::vector<CaptureOnePhoto> missing() const;

    [[nodiscard]] static const std::set<std::string, std::less<>>& testedSchemaVersions();
    [[nodiscard]] bool isTestedVersion() const;

    // Colour tag indexes as Capture One numbers them; 0 is no tag.
    static constexpr int kRed = 1;
    static constexpr auto kColorNames = CaptureOneRef::kColorNames;

    [[nodiscard]] static std::optional<std::string_view> colorName(int index) {
        return CaptureOneRef::colorName(index);
    }

    [[nodiscard]] static std::expected<CaptureOneCatalog, ReadError> read(const std::string& url);

    // The first entry of the package (in name order) that is a plain file
    // with the extension "cocatalogdb".
    [[nodiscard]] static std::optional<std::string> database(const std::string& package);

    // Capture One has the catalog open: a "writelock" file lies directly in
    // the package, or Capture One is running.
    [[nodiscard]] static bool isOpen(const std::string& url);
    [[nodiscard]] static bool isOpen(const std::string& url, const RunningApplications& running);

    // The catalogs in the home folder's Pictures, newest first.
    [[nodiscard]] static std::vector<std::string> defaultCatalogs();
    [[nodiscard]] static std::vector<std::string> catalogsIn(const std::string& folder);
    [[nodiscard]] static CatalogChoice choose(const std::string& folder);

    [[nodiscard]] static const std::vector<CatalogLayout::Table>& requiredColumns();
    // Assembled from the album filter and the metadata join.
    [[nodiscard]] static const std::string& photosQuery();

    static constexpr std::string_view kExtension = "cocatalog";
    static constexpr std::string_view kDatabaseExtension = "cocatalogdb";
    static constexpr std::string_view kSettingKey = "photoCleanup.captureOneCatalog";
    static constexpr std::string_view kLockFileName = "writelock";
    static constexpr std::array<std::string_view, 2> kBundlePrefixes = {"com.captureone.",
                                                                        "com.phaseone.captureone"};
    // Collections of this entity are albums; those inside a parent of the
    // other entity do not count.
    static constexpr int kAlbumEntity = 2;
    static constexpr int kExcludedParentEntity = 8;

    [[nodiscard]] static ReadError notACatalog();
};

} // namespace brevant
