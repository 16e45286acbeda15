#pragma once

#include "engine/catalogs/ApplicationCheck.hpp"
#include "engine/catalogs/CatalogChoice.hpp"
#include "engine/catalogs/CatalogLayout.hpp"
#include "engine/catalogs/CatalogReadError.hpp"
#include "engine/scan/LightroomRef.hpp"

#include <expected>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// One master photo of a Lightroom Classic catalog.
struct LightroomPhoto {
    // Where the file is: the catalog's path resolved through the real-path
    // call, or the joined path as recorded when that failed.
    std::string path;
    bool exists = false;
    LightroomRef ref;

    friend bool operator==(const LightroomPhoto&, const LightroomPhoto&) = default;
};

// A Lightroom Classic catalog (.lrcat) as read, never changed, by this
// engine. Reading works while Lightroom Classic is open.
//
// Catalogs made on another computer: a catalog kept on a shared or external
// drive often records root folders of that computer ("C:/Users/.../Pictures/")
// that do not exist here, and every photo would read as missing. Lightroom
// also records each root folder's place relative to the catalog
// (AgLibraryRootFolder.relativePathFromCatalog, for example "../"). When a
// photo's joined path does not resolve and that column exists and is set for
// its root, the root is taken relative to the catalog's own folder instead;
// the photo then carries the path found there, and that root is one of
// `rootFolders`. When neither resolves, the path as recorded is kept.
struct LightroomCatalog {
    using ReadError = CatalogReadError;
    using RunningApplications = ApplicationCheck::RunningApplications;

    std::string url;
    // Adobe_DBVersion, or "unknown" when the catalog has none.
    std::string schemaVersion;
    // Master photos in ascending id_local; virtual copies are counted on
    // their master, never listed.
    std::vector<LightroomPhoto> photos;
    // The root folders met among the photos, resolved where they exist.
    std::vector<std::string> rootFolders;

    friend bool operator==(const LightroomCatalog&, const LightroomCatalog&) = default;

    // The photos whose file was not found, in catalog order.
    [[nodiscard]] std::vector<LightroomPhoto> missing() const;

    // The versions that marking has been tested with. Reading never refuses
    // another version; marking does.
    [[nodiscard]] static const std::set<std::string, std::less<>>& testedSchemaVersions();
    [[nodiscard]] bool isTestedVersion() const;

    [[nodiscard]] static std::expected<LightroomCatalog, ReadError> read(const std::string& url);

    // Lightroom Classic has the catalog open: its lock file (the catalog's
    // path + ".lock") exists, or Lightroom Classic is running. Reading does
    // not ask this; marking does.
    [[nodiscard]] static bool isOpen(const std::string& url);
    [[nodiscard]] static bool isOpen(const std::string& url, const RunningApplications& running);

    // The catalogs in the home folder's Pictures/Lightroom, newest first.
    [[nodiscard]] static std::vector<std::string> defaultCatalogs();
    // The catalogs in a folder the user chose, newest first.
    [[nodiscard]] static std::vector<std::string> catalogsIn(const std::string& folder);
    // The catalog to use from a chosen folder, with the notice to show.
    [[nodiscard]] static CatalogChoice choose(const std::string& folder);

    // Root, then "/" unless it ends in one, then the folder, then "/" unless
    // the result ends in one, then the file name.
    [[nodiscard]] static std::string joinedPath(std::string_view root, std::string_view folder,
                                                std::string_view name);

    [[nodiscard]] static const std::vector<CatalogLayout::Table>& requiredColumns();
    [[nodiscard]] static const std::string& photosQuery();

    static constexpr std::string_view kExtension = "lrcat";
    static constexpr std::string_view kSettingKey = "photoCleanup.lightroomCatalog";
    static constexpr std::string_view kLockSuffix = ".lock";
    static constexpr std::string_view kBundlePrefix = "com.adobe.LightroomClassic";

    [[nodiscard]] static ReadError notACatalog();
};

} // namespace brevant
