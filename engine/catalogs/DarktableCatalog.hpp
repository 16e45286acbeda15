#pragma once

#include "engine/catalogs/ApplicationCheck.hpp"
#include "engine/catalogs/CatalogChoice.hpp"
#include "engine/catalogs/CatalogLayout.hpp"
#include "engine/catalogs/CatalogReadError.hpp"
#include "engine/scan/DarktableRef.hpp"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// One image file of a darktable library, with all its versions.
struct DarktablePhoto {
    // The file's path resolved through the real-path call, or the joined
    // path as recorded when that failed.
    std::string path;
    bool exists = false;
    // A version carries the tag Brevant marks with.
    bool isTagged = false;
    DarktableRef ref;

    friend bool operator==(const DarktablePhoto&, const DarktablePhoto&) = default;
};

// A darktable library: "library.db" with the images and their tags, and
// "data.db" beside it with the tags' names. Read, never changed, here;
// reading works while darktable is open.
struct DarktableCatalog {
    using ReadError = CatalogReadError;
    using RunningApplications = ApplicationCheck::RunningApplications;
    using IsAlive = std::function<bool(int processID)>;

    // library.db.
    std::string url;
    // data.db beside it.
    std::string dataURL;
    // Both databases' versions: "library 37, data 9".
    std::string schemaVersion;
    // The id of the tag Brevant marks with, when data.db has it.
    std::optional<std::int64_t> duplicatesTagID;
    // One a file, in ascending id of its first version.
    std::vector<DarktablePhoto> photos;
    // The distinct folders (film rolls) that hold the library's files,
    // resolved where they exist.
    std::vector<std::string> rootFolders;

    friend bool operator==(const DarktableCatalog&, const DarktableCatalog&) = default;

    [[nodiscard]] std::vector<DarktablePhoto> missing() const;

    [[nodiscard]] static const std::set<std::string, std::less<>>& testedSchemaVersions();
    [[nodiscard]] bool isTestedVersion() const;
    [[nodiscard]] static std::string schemaVersionText(std::string_view library,
                                                       std::string_view data);

    [[nodiscard]] static std::expected<DarktableCatalog, ReadError> read(const std::string& url);

    // data.db in the library's folder.
    [[nodiscard]] static std::string dataDatabase(const std::string& library);

    // darktable has the library open: a lock file beside either database
    // names a process that still runs, or darktable is running. A lock file
    // left by a darktable that crashed names no live process and does not
    // count.
    [[nodiscard]] static bool isOpen(const std::string& url);
    [[nodiscard]] static bool isOpen(const std::string& url, const RunningApplications& running,
                                     const IsAlive& isAlive);

    [[nodiscard]] static CatalogChoice choose(const std::string& folder);

    [[nodiscard]] static const std::vector<CatalogLayout::Table>& requiredLibraryColumns();
    [[nodiscard]] static const std::vector<CatalogLayout::Table>& requiredDataColumns();
    [[nodiscard]] static const std::string& photosQuery();

    static constexpr std::string_view kFileName = "library.db";
    static constexpr std::string_view kDataFileName = "data.db";
    static constexpr std::string_view kLockSuffix = ".lock";
    static constexpr std::string_view kBundlePrefix = "org.darktable.";
    // darktable's own tags ("darktable|format|jpg") are not the user's.
    static constexpr std::string_view kInternalTagPrefix = "darktable|";
    // images.flags: the stars in the low bits, and the rejection bit. Older
    // libraries wrote 6 in the star bits for a rejected image.
    static constexpr std::int64_t kRatingMask = 0x7;
    static constexpr std::int64_t kRejectedFlag = 0x8;
    static constexpr std::int64_t kLegacyRejectedRating = 6;

    [[nodiscard]] static ReadError notACatalog();
};

} // namespace brevant
