#pragma once

#include "engine/catalogs/ApplicationCheck.hpp"
#include "engine/catalogs/CatalogChoice.hpp"
#include "engine/catalogs/CatalogLayout.hpp"
#include "engine/catalogs/CatalogReadError.hpp"
#include "engine/platform/VolumeMounts.hpp"
#include "engine/scan/DigikamRef.hpp"

#include <expected>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// One visible item of a digiKam library.
struct DigikamPhoto {
    // The file's path resolved through the real-path call, or the joined
    // path as recorded when that failed.
    std::string path;
    bool exists = false;
    // Its album root lies on a drive that is not connected now.
    bool notConnected = false;
    // Already carries the duplicates tag.
    bool isTagged = false;
    DigikamRef ref;

    friend bool operator==(const DigikamPhoto&, const DigikamPhoto&) = default;
};

// A digiKam library: the SQLite database "digikam4.db" in digiKam's
// database folder. Read, never changed, here; reading works while digiKam
// is open.
struct DigikamCatalog {
    using ReadError = CatalogReadError;
    using RunningApplications = ApplicationCheck::RunningApplications;

    // The database file.
    std::string url;
    // The Settings row "DBVersion", or "unknown".
    std::string schemaVersion;
    // In ascending id.
    std::vector<DigikamPhoto> photos;
    // The distinct folders that hold the library's files, resolved where
    // they exist.
    std::vector<std::string> rootFolders;

    friend bool operator==(const DigikamCatalog&, const DigikamCatalog&) = default;

    // Listed on a connected drive, but not there.
    [[nodiscard]] std::vector<DigikamPhoto> missing() const;
    [[nodiscard]] std::vector<DigikamPhoto> notConnected() const;

    [[nodiscard]] static const std::set<std::string, std::less<>>& testedSchemaVersions();
    [[nodiscard]] bool isTestedVersion() const;

    [[nodiscard]] static std::expected<DigikamCatalog, ReadError> read(const std::string& url);
    [[nodiscard]] static std::expected<DigikamCatalog, ReadError>
    read(const std::string& url, const platform::VolumeMounts& mounts);

    // The folder an album root stands for today, from its identifier and
    // specific path; nothing when its drive is not connected or the
    // identifier is of a kind digiKam did not write.
    [[nodiscard]] static std::optional<std::string> rootPath(std::string_view identifier,
                                                             std::string_view specificPath,
                                                             const platform::VolumeMounts& mounts);

    // digiKam has its library open: it is running (it keeps no lock file).
    [[nodiscard]] static bool isOpen(const std::string& url);
    [[nodiscard]] static bool isOpen(const std::string& url, const RunningApplications& running);

    // The library of a folder. In digiKam's default folder the database
    // digiKam is configured with counts first: another folder, or a
    // MySQL/MariaDB server, which is refused with a sentence.
    [[nodiscard]] static CatalogChoice choose(const std::string& folder);
    // The same with the text of digiKam's configuration file given, for
    // tests; nothing when there is none.
    [[nodiscard]] static CatalogChoice choose(const std::string& folder,
                                              const std::optional<std::string>& configuration);

    // What digiKam's configuration says of its database.
    struct Configured {
        // "QSQLITE" or "QMYSQL"; empty when not said.
        std::string type;
        // The folder of the SQLite database.
        std::string folder;
    };

    [[nodiscard]] static Configured configured(std::string_view configuration);

    [[nodiscard]] static const std::vector<CatalogLayout::Table>& requiredColumns();
    [[nodiscard]] static const std::string& photosQuery();

    static constexpr std::string_view kFileName = "digikam4.db";
    static constexpr std::string_view kDefaultFolder = "/Pictures";
    static constexpr std::string_view kConfigurationFile = "digikamrc";
    static constexpr std::string_view kBundlePrefix = "org.kde.digikam";
    // The visible status of Images.
    static constexpr int kVisible = 1;
    static constexpr std::string_view kInternalTags = "_Digikam_Internal_Tags_";

    [[nodiscard]] static ReadError notACatalog();
    [[nodiscard]] static const std::string& mysqlSentence();
};

} // namespace brevant
