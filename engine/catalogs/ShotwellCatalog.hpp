#pragma once

#include "engine/catalogs/ApplicationCheck.hpp"
#include "engine/catalogs/CatalogChoice.hpp"
#include "engine/catalogs/CatalogLayout.hpp"
#include "engine/catalogs/CatalogReadError.hpp"
#include "engine/scan/ShotwellRef.hpp"

#include <cstdint>
#include <expected>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// One photo of a Shotwell library (videos are not read).
struct ShotwellPhoto {
    // The file's path resolved through the real-path call, or as recorded
    // when that failed.
    std::string path;
    bool exists = false;
    // In Shotwell's own Trash, on its way out already.
    bool isTrashed = false;
    // Carries the tag the marking gives.
    bool isMarked = false;
    ShotwellRef ref;

    friend bool operator==(const ShotwellPhoto&, const ShotwellPhoto&) = default;
};

// A Shotwell library: the SQLite database "photo.db". Read, never changed,
// here; reading works while Shotwell is open.
struct ShotwellCatalog {
    using ReadError = CatalogReadError;
    using RunningApplications = ApplicationCheck::RunningApplications;

    std::string url;
    // VersionTable's schema version, or "unknown".
    std::string schemaVersion;
    // In ascending id.
    std::vector<ShotwellPhoto> photos;
    // The distinct folders that hold the photos, resolved where they exist.
    std::vector<std::string> rootFolders;
    // The marking's tag, when the library has it.
    std::optional<std::int64_t> duplicatesTagID;

    friend bool operator==(const ShotwellCatalog&, const ShotwellCatalog&) = default;

    [[nodiscard]] std::vector<ShotwellPhoto> missing() const;

    // Shotwell 0.30 (Debian 12) writes schema 20; the current Shotwell
    // writes 24.
    [[nodiscard]] static const std::set<std::string, std::less<>>& testedSchemaVersions();
    [[nodiscard]] bool isTestedVersion() const;

    [[nodiscard]] static std::expected<ShotwellCatalog, ReadError> read(const std::string& url);

    // Shotwell keeps no lock file, so only its process tells.
    [[nodiscard]] static bool isOpen(const std::string& url);
    [[nodiscard]] static bool isOpen(const std::string& url, const RunningApplications& running);

    // The library in a folder: its "photo.db" when that is a plain file.
    [[nodiscard]] static CatalogChoice choose(const std::string& folder);

    [[nodiscard]] static const std::vector<CatalogLayout::Table>& requiredColumns();

    static constexpr std::string_view kFileName = "photo.db";
    // Under the home folder.
    static constexpr std::string_view kDefaultFolder = "/.local/share/shotwell/data";
    static constexpr std::string_view kBundlePrefix = "org.gnome.Shotwell";

    // PhotoTable's flag bits, as Shotwell's library photos set them.
    static constexpr std::int64_t kHiddenFlag = 0x1;
    static constexpr std::int64_t kFlaggedFlag = 0x2;
    static constexpr std::int64_t kTrashFlag = 0x4;
    // An editable_id of -1 means no outside edit.
    static constexpr std::int64_t kNoEditable = -1;

    [[nodiscard]] static ReadError notACatalog();
};

} // namespace brevant
