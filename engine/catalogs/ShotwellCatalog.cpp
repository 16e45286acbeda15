#include "ShotwellCatalog.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogOpening.hpp"
#include "engine/catalogs/SQLiteReader.hpp"
#include "engine/catalogs/ShotwellTagList.hpp"
#include "engine/catalogs/TagMarkRecord.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/scan/PathRules.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <unordered_map>
#include <unordered_set>

namespace brevant {

namespace {

const std::string kVersionQuery =
    "SELECT schema_version FROM VersionTable ORDER BY schema_version DESC LIMIT 1";

using Values = SQLiteValues;

// How many tags carry each photo, and which photos carry the marking's tag.
struct TagCounts {
    std::unordered_map<std::int64_t, int> tags;
    std::unordered_set<std::int64_t> marked;
    std::optional<std::int64_t> duplicatesTagID;
};

std::expected<TagCounts, CatalogReadError> readTags(const SQLiteReader& reader) {
    auto rows = reader.rows("SELECT id, name, photo_id_list FROM TagTable ORDER BY id");
    if (!rows) {
        return std::unexpected(rows.error());
    }
    TagCounts counts;
    for (const auto& row : *rows) {
        bool isDuplicates = Values::text(Values::column(row, 1)) == kDuplicatesTag;
        if (isDuplicates) {
            counts.duplicatesTagID = Values::integer(Values::column(row, 0));
        }
        auto list = ShotwellTagList::parse(Values::text(Values::column(row, 2)));
        std::unordered_set<std::int64_t> seen;
        for (const auto& entry : list.entries) {
            auto id = ShotwellTagList::photoID(entry);
            if (!id || !seen.insert(*id).second) {
                continue;
            }
            if (isDuplicates) {
                counts.marked.insert(*id);
            } else {
                ++counts.tags[*id];
            }
        }
    }
    return counts;
}

ShotwellPhoto photoFromRow(const SQLiteRow& row, const TagCounts& counts) {
    ShotwellPhoto photo;
    photo.ref.imageID = Values::integer(Values::column(row, 0));
    std::string recorded = Values::text(Values::column(row, 1));
    auto real = platform::realPath(recorded);
    photo.path = real.value_or(recorded);
    photo.exists = real.has_value();
    auto flags = Values::integer(Values::column(row, 2));
    photo.isTrashed = (flags & ShotwellCatalog::kTrashFlag) != 0;
    photo.ref.isHidden = (flags & ShotwellCatalog::kHiddenFlag) != 0;
    photo.ref.isFlagged = (flags & ShotwellCatalog::kFlaggedFlag) != 0;
    photo.ref.rating = Values::smallInteger(Values::column(row, 3));
    bool adjusted = !Values::text(Values::column(row, 4)).empty();
    const auto& editable = Values::column(row, 5);
    photo.ref.isEdited =
        adjusted || (editable && Values::integer(editable) != ShotwellCatalog::kNoEditable);
    if (auto found = counts.tags.find(photo.ref.imageID); found != counts.tags.end()) {
        photo.ref.tags = found->second;
    }
    photo.isMarked = counts.marked.contains(photo.ref.imageID);
    return photo;
}

std::vector<std::string> rootFoldersOf(const std::vector<ShotwellPhoto>& photos) {
    std::unordered_set<std::string> met;
    std::unordered_set<std::string> resolved;
    std::vector<std::string> roots;
    for (const auto& photo : photos) {
        std::string folder = PathRules::parentFolder(photo.path);
        if (!met.insert(folder).second) {
            continue;
        }
        std::string real = platform::realPath(folder).value_or(folder);
        if (resolved.insert(real).second) {
            roots.push_back(std::move(real));
        }
    }
    return roots;
}

} // namespace

std::vector<ShotwellPhoto> ShotwellCatalog::missing() const {
    std::vector<ShotwellPhoto> result;
    std::ranges::copy_if(photos, std::back_inserter(result),
                         [](const ShotwellPhoto& photo) { return !photo.exists; });
    return result;
}

const std::set<std::string, std::less<>>& ShotwellCatalog::testedSchemaVersions() {
    static const std::set<std::string, std::less<>> versions = {"20", "24"};
    return versions;
}

bool ShotwellCatalog::isTestedVersion() const {
    return testedSchemaVersions().contains(schemaVersion);
}

std::expected<ShotwellCatalog, CatalogReadError> ShotwellCatalog::read(const std::string& url) {
    if (PathRules::lowercased(PathRules::lastComponent(url)) != kFileName) {
        return std::unexpected(notACatalog());
    }
    auto opened =
        CatalogOpening::open(url, CatalogApplication::shotwell, requiredColumns(), kVersionQuery);
    if (!opened) {
        return std::unexpected(opened.error());
    }
    ShotwellCatalog catalog{.url = url};
    catalog.schemaVersion = std::move(opened->version);
    auto counts = readTags(opened->reader);
    if (!counts) {
        return std::unexpected(counts.error());
    }
    catalog.duplicatesTagID = counts->duplicatesTagID;
    auto rows = opened->reader.rows("SELECT id, filename, COALESCE(flags, 0), COALESCE(rating, 0), "
                                    "transformations, editable_id FROM PhotoTable ORDER BY id");
    if (!rows) {
        return std::unexpected(rows.error());
    }
    catalog.photos.reserve(rows->size());
    for (const auto& row : *rows) {
        catalog.photos.push_back(photoFromRow(row, *counts));
    }
    catalog.rootFolders = rootFoldersOf(catalog.photos);
    return catalog;
}

bool ShotwellCatalog::isOpen(const std::string& url) {
    return isOpen(url, platform::runningApplications);
}

bool ShotwellCatalog::isOpen(const std::string& /*url*/, const RunningApplications& running) {
    return ApplicationCheck::isOpen({}, {kBundlePrefix}, running);
}

CatalogChoice ShotwellCatalog::choose(const std::string& folder) {
    std::string candidate = folder;
    while (candidate.size() > 1 && candidate.ends_with('/')) {
        candidate.pop_back();
    }
    candidate += "/" + std::string(kFileName);
    auto status = platform::statusOfPath(candidate);
    if (!status || !status->isRegularFile) {
        return CatalogChoice::choose(
            {}, CatalogKindTexts::of(CatalogApplication::shotwell).noCatalogText(folder));
    }
    return CatalogChoice::choose(
        {candidate}, CatalogKindTexts::of(CatalogApplication::shotwell).noCatalogText(folder));
}

const std::vector<CatalogLayout::Table>& ShotwellCatalog::requiredColumns() {
    static const std::vector<CatalogLayout::Table> tables = {
        {"PhotoTable", {"id", "filename", "flags", "rating", "transformations", "editable_id"}},
        {"TagTable", {"id", "name", "photo_id_list", "time_created"}},
        {"VersionTable", {"schema_version"}},
    };
    return tables;
}

CatalogReadError ShotwellCatalog::notACatalog() {
    return CatalogReadError::notACatalog(
        CatalogKindTexts::of(CatalogApplication::shotwell).notACatalogText());
}

} // namespace brevant
