#include "DarktableCatalog.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogOpening.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/catalogs/RootFolders.hpp"
#include "engine/catalogs/SQLiteReader.hpp"
#include "engine/catalogs/TagMarkRecord.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/LockOwner.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/platform/RunningApplications.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PathRules.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace brevant {

namespace {

const std::string kVersionQuery = "SELECT value FROM db_info WHERE key = 'version'";

using Values = SQLiteValues;

// What the library says of one image row, beyond its place.
struct ImageRow {
    std::int64_t id = 0;
    std::int64_t filmID = 0;
    std::string folder;
    std::string filename;
    std::int64_t flags = 0;
    bool isEdited = false;
};

ImageRow imageRow(const SQLiteRow& row) {
    return {.id = Values::integer(Values::column(row, 0)),
            .filmID = Values::integer(Values::column(row, 1)),
            .folder = Values::text(Values::column(row, 2)),
            .filename = Values::text(Values::column(row, 3)),
            .flags = Values::integer(Values::column(row, 4)),
            .isEdited = Values::integer(Values::column(row, 5)) != 0};
}

int ratingOf(std::int64_t flags) {
    auto stars = flags & DarktableCatalog::kRatingMask;
    return stars <= 5 ? static_cast<int>(stars) : 0;
}

bool isRejected(std::int64_t flags) {
    return (flags & DarktableCatalog::kRejectedFlag) != 0 ||
           (flags & DarktableCatalog::kRatingMask) == DarktableCatalog::kLegacyRejectedRating;
}

// The tags of data.db as reading needs them: which are darktable's own,
// and which is Brevant's.
struct TagNames {
    std::unordered_set<std::int64_t> internal;
    std::optional<std::int64_t> duplicates;
};

std::expected<TagNames, CatalogReadError> tagNames(const SQLiteReader& data) {
    auto rows = data.rows("SELECT id, name FROM tags");
    if (!rows) {
        return std::unexpected(rows.error());
    }
    TagNames names;
    for (const auto& row : *rows) {
        auto id = Values::integer(Values::column(row, 0));
        auto name = Values::text(Values::column(row, 1));
        if (name == kDuplicatesTag) {
            names.duplicates = id;
        } else if (name.starts_with(DarktableCatalog::kInternalTagPrefix)) {
            names.internal.insert(id);
        }
    }
    return names;
}

using PairsByImage = std::unordered_map<std::int64_t, std::vector<std::int64_t>>;

// The second column of each row, by the first.
std::expected<PairsByImage, CatalogReadError> pairsByImage(const SQLiteReader& reader,
                                                           const std::string& sql) {
    auto rows = reader.rows(sql);
    if (!rows) {
        return std::unexpected(rows.error());
    }
    PairsByImage pairs;
    for (const auto& row : *rows) {
        pairs[Values::integer(Values::column(row, 0))].push_back(
            Values::integer(Values::column(row, 1)));
    }
    return pairs;
}

// Folds the rows of one file's versions into one photo, and collects the
// folders met.
class PhotoPlaces {
public:
    PhotoPlaces(const TagNames& names, const PairsByImage& tags, const PairsByImage& labels)
        : names_(names)
        , tags_(tags)
        , labels_(labels) {}

    DarktablePhoto place(const std::vector<ImageRow>& versions) {
        const auto& first = versions.front();
        std::string joined = LightroomCatalog::joinedPath(first.folder, "", first.filename);
        auto real = platform::realPath(joined);
        roots_.meet(first.folder);
        DarktablePhoto photo{.path = real.value_or(joined), .exists = real.has_value()};
        photo.ref.imageID = first.id;
        photo.ref.isRejected = true;
        std::set<std::int64_t> userTags;
        std::set<int> colors;
        for (const auto& version : versions) {
            photo.ref.versionIDs.push_back(version.id);
            photo.ref.rating = std::max(photo.ref.rating, ratingOf(version.flags));
            photo.ref.isRejected = photo.ref.isRejected && isRejected(version.flags);
            photo.ref.isEdited = photo.ref.isEdited || version.isEdited;
            for (auto tag : found(tags_, version.id)) {
                if (tag == names_.duplicates) {
                    photo.isTagged = true;
                } else if (!names_.internal.contains(tag)) {
                    userTags.insert(tag);
                }
            }
            for (auto label : found(labels_, version.id)) {
                colors.insert(static_cast<int>(label));
            }
        }
        photo.ref.tags = static_cast<int>(userTags.size());
        photo.ref.colorLabels.assign(colors.begin(), colors.end());
        return photo;
    }

    std::vector<std::string> takeRootFolders() { return roots_.take(); }

private:
    static const std::vector<std::int64_t>& found(const PairsByImage& pairs, std::int64_t id) {
        static const std::vector<std::int64_t> none;
        auto it = pairs.find(id);
        return it == pairs.end() ? none : it->second;
    }

    const TagNames& names_;
    const PairsByImage& tags_;
    const PairsByImage& labels_;
    RootFolders roots_;
};

// The rows in query order, cut where the film roll or the file name
// changes: each run is one file's versions, first version first.
std::vector<std::vector<ImageRow>> filesOf(const std::vector<SQLiteRow>& rows) {
    std::vector<std::vector<ImageRow>> files;
    for (const auto& row : rows) {
        auto image = imageRow(row);
        if (files.empty() || files.back().front().filmID != image.filmID ||
            files.back().front().filename != image.filename) {
            files.emplace_back();
        }
        files.back().push_back(std::move(image));
    }
    return files;
}

bool isLibraryName(const std::string& path) {
    return PathRules::asciiLowercased(PathRules::lastComponent(path)) ==
           DarktableCatalog::kFileName;
}

bool isRunning(const DarktableCatalog::RunningApplications& running) {
    if (!running) {
        return false;
    }
    return std::ranges::any_of(running(), [](const platform::RunningApplication& application) {
        const auto& bundle = application.bundleIdentifier;
        return bundle && bundle->starts_with(DarktableCatalog::kBundlePrefix);
    });
}

} // namespace

std::vector<DarktablePhoto> DarktableCatalog::missing() const {
    std::vector<DarktablePhoto> result;
    std::ranges::copy_if(photos, std::back_inserter(result),
                         [](const DarktablePhoto& photo) { return !photo.exists; });
    return result;
}

std::string DarktableCatalog::schemaVersionText(std::string_view library, std::string_view data) {
    return fmt::format("library {}, data {}", library, data);
}

// darktable 4.2.1, as Debian 12 ships it, writes library 37 and data 9.
const std::set<std::string, std::less<>>& DarktableCatalog::testedSchemaVersions() {
    static const std::set<std::string, std::less<>> versions = {schemaVersionText("37", "9")};
    return versions;
}

bool DarktableCatalog::isTestedVersion() const {
    return testedSchemaVersions().contains(schemaVersion);
}

std::string DarktableCatalog::dataDatabase(const std::string& library) {
    std::string folder = PathRules::parentFolder(library);
    return (folder.empty() ? std::string(".") : folder) + "/" + std::string(kDataFileName);
}

std::expected<DarktableCatalog, CatalogReadError> DarktableCatalog::read(const std::string& url) {
    if (!isLibraryName(url)) {
        return std::unexpected(notACatalog());
    }
    auto library = CatalogOpening::open(url, CatalogApplication::darktable,
                                        requiredLibraryColumns(), kVersionQuery);
    if (!library) {
        return std::unexpected(library.error());
    }
    DarktableCatalog catalog{.url = url, .dataURL = dataDatabase(url)};
    auto data = CatalogOpening::open(catalog.dataURL, CatalogApplication::darktable,
                                     requiredDataColumns(), kVersionQuery);
    if (!data) {
        return std::unexpected(data.error());
    }
    catalog.schemaVersion = schemaVersionText(library->version, data->version);
    auto names = tagNames(data->reader);
    if (!names) {
        return std::unexpected(names.error());
    }
    catalog.duplicatesTagID = names->duplicates;
    auto tags = pairsByImage(library->reader, "SELECT imgid, tagid FROM tagged_images");
    auto labels =
        tags ? pairsByImage(library->reader, "SELECT imgid, color FROM color_labels") : tags;
    if (!labels) {
        return std::unexpected(labels.error());
    }
    auto rows = library->reader.rows(photosQuery());
    if (!rows) {
        return std::unexpected(rows.error());
    }
    PhotoPlaces places(*names, *tags, *labels);
    for (const auto& versions : filesOf(*rows)) {
        catalog.photos.push_back(places.place(versions));
    }
    std::ranges::sort(catalog.photos, std::less(),
                      [](const DarktablePhoto& photo) { return photo.ref.imageID; });
    catalog.rootFolders = places.takeRootFolders();
    return catalog;
}

bool DarktableCatalog::isOpen(const std::string& url) {
    return isOpen(url, platform::runningApplications, platform::isProcessAlive);
}

bool DarktableCatalog::isOpen(const std::string& url, const RunningApplications& running,
                              const IsAlive& isAlive) {
    for (const auto& database : {url, dataDatabase(url)}) {
        auto owner = platform::lockFileProcess(database + std::string(kLockSuffix));
        if (owner && isAlive && isAlive(*owner)) {
            return true;
        }
    }
    return isRunning(running);
}

CatalogChoice DarktableCatalog::choose(const std::string& folder) {
    std::string library = folder + "/" + std::string(kFileName);
    auto status = FileSnapshot::read(library);
    std::vector<std::string> found;
    if (status && !status->isSymbolicLink) {
        found.push_back(library);
    }
    return CatalogChoice::choose(
        found, CatalogKindTexts::of(CatalogApplication::darktable).noCatalogText(folder));
}

const std::vector<CatalogLayout::Table>& DarktableCatalog::requiredLibraryColumns() {
    static const std::vector<CatalogLayout::Table> tables = {
        {"images", {"id", "film_id", "filename", "version", "flags"}},
        {"film_rolls", {"id", "folder"}},
        {"tagged_images", {"imgid", "tagid", "position"}},
        {"color_labels", {"imgid", "color"}},
        {"history", {"imgid"}},
        {"db_info", {"key", "value"}},
    };
    return tables;
}

const std::vector<CatalogLayout::Table>& DarktableCatalog::requiredDataColumns() {
    static const std::vector<CatalogLayout::Table> tables = {
        {"tags", {"id", "name"}},
        {"db_info", {"key", "value"}},
    };
    return tables;
}

const std::string& DarktableCatalog::photosQuery() {
    static const std::string query =
        "SELECT i.id, i.film_id, f.folder, i.filename, COALESCE(i.flags, 0),\n"
        "       EXISTS (SELECT 1 FROM history h WHERE h.imgid = i.id)\n"
        "FROM images i JOIN film_rolls f ON f.id = i.film_id\n"
        "ORDER BY i.film_id, i.filename, COALESCE(i.version, 0), i.id";
    return query;
}

CatalogReadError DarktableCatalog::notACatalog() {
    return CatalogReadError::notACatalog(
        CatalogKindTexts::of(CatalogApplication::darktable).notACatalogText());
}

} // namespace brevant
