#include "CaptureOneMarker.hpp"

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/CatalogTransaction.hpp"
#include "engine/catalogs/MarkRecordFiles.hpp"
#include "engine/catalogs/MarkTexts.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>

namespace brevant {

namespace {

using Item = CaptureOneMarkRecord::Item;
using Failure = SQLiteWriter::Failure;

// A planned image that passed its re-check, with the variant to tag.
struct Chosen {
    std::int64_t imageID = 0;
    std::int64_t variantID = 0;
    std::string path;
};

std::optional<CaptureOneRefusal> refusalBeforeReading(const CleanupPlan& plan,
                                                      const CleanupApproval& approval) {
    if (approval.planID != plan.id) {
        return CaptureOneRefusal::approvalDoesNotMatch();
    }
    if (!std::ranges::all_of(plan.removals, [](const PlannedRemoval& removal) {
            return removal.captureOneImageID.has_value();
        })) {
        return CaptureOneRefusal::notCaptureOnePhotos();
    }
    return std::nullopt;
}

// Every digit a double holds, so that a date put back is the very value that
// was there, and always with a point, so that SQLite stores a real number.
std::string sqlReal(std::optional<double> value) {
    if (!value) {
        return "NULL";
    }
    std::string text = fmt::format("{:.17g}", *value);
    if (text.find_first_of(".eEn") == std::string::npos) {
        text += ".0";
    }
    return text;
}

std::string sqlInteger(std::optional<int> value) {
    return value ? fmt::format("{}", *value) : std::string("NULL");
}

std::expected<Item, Failure> tagRed(const SQLiteWriter& writer, const Chosen& chosen, Date now) {
    Item item{.imageID = chosen.imageID, .variantID = chosen.variantID, .path = chosen.path};
    auto rows = writer.rows(CaptureOneMarker::metadataQuery(chosen.variantID, chosen.imageID));
    if (!rows) {
        return std::unexpected(rows.error());
    }
    if (rows->empty()) {
        return std::unexpected(Failure{std::string(CaptureOneMarker::kNotWhereScanned)});
    }
    for (const auto& row : *rows) {
        // Two layers may share one metadata row; it is one row to tag and to
        // put back.
        auto id = SQLiteValues::integer(SQLiteValues::column(row, 0));
        if (std::ranges::find(item.metadataIDs, id) != item.metadataIDs.end()) {
            continue;
        }
        item.metadataIDs.push_back(id);
        const auto& tag = SQLiteValues::column(row, 1);
        item.previousTags.push_back(
            tag ? std::optional(static_cast<int>(SQLiteValues::integer(tag))) : std::nullopt);
    }
    auto modified = writer.rows(fmt::format(
        "SELECT ZLASTMETADATAMODIFICATIONDATE FROM ZVARIANT WHERE Z_PK = {}", chosen.variantID));
    if (!modified) {
        return std::unexpected(modified.error());
    }
    if (!modified->empty()) {
        item.previousModified = SQLiteValues::real(SQLiteValues::column(modified->front(), 0));
    }
    std::string ids = fmt::format("{}", fmt::join(item.metadataIDs, ", "));
    if (auto tagged = writer.run(
            fmt::format("UPDATE ZVARIANTMETADATA SET ZCOLOR_TAG_INDEX = {} WHERE Z_PK IN ({})",
                        CaptureOneCatalog::kRed, ids));
        !tagged) {
        return std::unexpected(tagged.error());
    }
    if (auto dated = writer.run(
            fmt::format("UPDATE ZVARIANT SET ZLASTMETADATAMODIFICATIONDATE = {} WHERE Z_PK = {}",
                        sqlReal(now.secondsSinceReferenceDate), chosen.variantID));
        !dated) {
        return std::unexpected(dated.error());
    }
    return item;
}

// An item whose rows do not all carry the Red tag any more was retagged by
// the user since; it is left whole.
std::expected<void, Failure> untag(const SQLiteWriter& writer, const Item& item) {
    auto counted = writer.rows(fmt::format(
        "SELECT COUNT(*) FROM ZVARIANTMETADATA WHERE Z_PK IN ({}) AND ZCOLOR_TAG_INDEX = {}",
        fmt::join(item.metadataIDs, ", "), CaptureOneCatalog::kRed));
    if (!counted) {
        return std::unexpected(counted.error());
    }
    auto red =
        counted->empty() ? 0 : SQLiteValues::integer(SQLiteValues::column(counted->front(), 0));
    if (red != static_cast<std::int64_t>(item.metadataIDs.size())) {
        return {};
    }
    for (std::size_t index = 0; index < item.metadataIDs.size(); ++index) {
        auto tag = index < item.previousTags.size() ? item.previousTags[index] : std::nullopt;
        if (auto updated = writer.run(
                fmt::format("UPDATE ZVARIANTMETADATA SET ZCOLOR_TAG_INDEX = {} WHERE Z_PK = {}",
                            sqlInteger(tag), item.metadataIDs[index]));
            !updated) {
            return std::unexpected(updated.error());
        }
    }
    auto dated = writer.run(
        fmt::format("UPDATE ZVARIANT SET ZLASTMETADATAMODIFICATIONDATE = {} WHERE Z_PK = {}",
                    sqlReal(item.previousModified), item.variantID));
    if (!dated) {
        return std::unexpected(dated.error());
    }
    return {};
}

std::expected<void, CaptureOneRefusal> save(const std::string& directory,
                                            const CaptureOneMarkRecord& record) {
    auto saved = MarkRecordFiles::save(directory, record.id, json::Json(record));
    if (!saved) {
        return std::unexpected(CaptureOneRefusal::recordNotSaved(saved.error()));
    }
    return {};
}

} // namespace

std::string CaptureOneMarker::defaultRecordDirectory() {
    return platform::DataFolder::current().markings() + "/Capture One";
}

std::string CaptureOneMarker::metadataQuery(std::int64_t variantID, std::int64_t imageID) {
    return fmt::format(
        "SELECT m.Z_PK, m.ZCOLOR_TAG_INDEX FROM ZVARIANT v\n"
        "JOIN ZVARIANTLAYER l ON l.Z_PK IN (v.ZADJUSTMENTLAYER, v.ZCOMBINEDSETTINGS)\n"
        "JOIN ZVARIANTMETADATA m ON m.Z_PK = l.ZMETADATA\n"
        "WHERE v.Z_PK = {} AND v.ZIMAGE = {} ORDER BY l.Z_PK",
        variantID, imageID);
}

std::optional<std::string_view> CaptureOneMarker::recheck(const PlannedRemoval& removal,
                                                          const CaptureOnePhoto* photo) {
    if (photo == nullptr || photo->path != removal.path) {
        return CatalogRecheck::kNotInCatalog;
    }
    if (!CatalogRecheck::isUnchanged(removal.path, removal.snapshot)) {
        return CatalogRecheck::kChanged;
    }
    if (photo->isTrashed) {
        return kInTrash;
    }
    const auto& tags = photo->ref.colorTags;
    if (std::ranges::find(tags, CaptureOneCatalog::kRed) != tags.end()) {
        return kAlreadyRed;
    }
    if (photo->ref.variants > 1) {
        return kSecondVariant;
    }
    if (std::ranges::any_of(tags, [](int tag) { return tag != 0; })) {
        return kHasColorTag;
    }
    if (!CatalogRecheck::hasKeeperLeft(removal)) {
        return CatalogRecheck::kNoKeeperLeft;
    }
    return std::nullopt;
}

std::expected<CaptureOneMarker::Report, CaptureOneMarker::Refusal>
CaptureOneMarker::mark(const CleanupPlan& plan, const CleanupApproval& approval,
                       const std::string& catalog, Date now) const {
    if (auto refused = refusalBeforeReading(plan, approval)) {
        return std::unexpected(std::move(*refused));
    }
    if (isOpen(catalog)) {
        return std::unexpected(Refusal::captureOneOpen());
    }
    auto fresh = CaptureOneCatalog::read(catalog);
    if (!fresh) {
        return std::unexpected(Refusal::writeFailed(fresh.error().text()));
    }
    if (!fresh->isTestedVersion()) {
        return std::unexpected(Refusal::untestedVersion(fresh->schemaVersion));
    }

    std::map<std::int64_t, const CaptureOnePhoto*> byID;
    for (const auto& photo : fresh->photos) {
        byID.emplace(photo.ref.imageID, &photo);
    }
    Report report{.id = Uuid::make()};
    std::vector<Chosen> chosen;
    for (const auto& removal : plan.removals) {
        auto found = removal.captureOneImageID ? byID.find(*removal.captureOneImageID) : byID.end();
        const CaptureOnePhoto* photo = found != byID.end() ? found->second : nullptr;
        if (auto reason = recheck(removal, photo)) {
            report.skipped.push_back(CatalogRecheck::skipped(removal, *reason));
            continue;
        }
        chosen.push_back({photo->ref.imageID, photo->ref.variantID, photo->path});
    }
    if (chosen.empty()) {
        return report;
    }

    auto backup = CatalogBackup::backUpCaptureOne(catalog, fresh->databaseURL, now);
    if (!backup) {
        return std::unexpected(Refusal::backupFailed(backup.error().description));
    }
    std::vector<Item> items;
    auto changed = CatalogTransaction::run(fresh->databaseURL, [&](const SQLiteWriter& writer) {
        for (const auto& one : chosen) {
            auto item = tagRed(writer, one, now);
            if (!item) {
                return std::expected<void, Failure>(std::unexpected(item.error()));
            }
            items.push_back(std::move(*item));
        }
        return std::expected<void, Failure>();
    });
    if (!changed) {
        return std::unexpected(Refusal::writeFailed(changed.error().description));
    }

    CaptureOneMarkRecord record{.id = Uuid::make(),
                                .planID = plan.id,
                                .catalogPath = catalog,
                                .backupPath = *backup,
                                .date = Date::fromUnixSeconds(std::floor(now.unixSeconds())),
                                .marked = std::move(items)};
    if (auto saved = save(recordDirectory, record); !saved) {
        // Without a record there is no undo from here: the backup is the
        // way back, so it is named.
        return std::unexpected(Refusal::recordNotSaved(
            fmt::format("{} (the backup from before is {})", saved.error().detail, *backup)));
    }
    for (const auto& item : record.marked) {
        report.marked.push_back(item.path);
    }
    report.record = std::move(record);
    return report;
}

std::expected<CaptureOneMarkRecord, CaptureOneMarker::Refusal>
CaptureOneMarker::restore(const CaptureOneMarkRecord& record) const {
    if (record.restored) {
        return record;
    }
    if (isOpen(record.catalogPath)) {
        return std::unexpected(Refusal::captureOneOpen());
    }
    auto package = FileSnapshot::read(record.catalogPath);
    auto database = package ? CaptureOneCatalog::database(record.catalogPath) : std::nullopt;
    if (!database) {
        return std::unexpected(Refusal::writeFailed(std::string(mark_texts::kCatalogGone)));
    }
    auto changed = CatalogTransaction::run(*database, [&record](const SQLiteWriter& writer) {
        for (const auto& item : record.marked) {
            if (auto done = untag(writer, item); !done) {
                return done;
            }
        }
        return std::expected<void, Failure>();
    });
    if (!changed) {
        return std::unexpected(Refusal::writeFailed(changed.error().description));
    }
    CaptureOneMarkRecord restored = record;
    restored.restored = true;
    if (auto saved = save(recordDirectory, restored); !saved) {
        return std::unexpected(saved.error());
    }
    return restored;
}

std::vector<CaptureOneMarkRecord> CaptureOneMarker::history() const {
    std::vector<CaptureOneMarkRecord> records;
    for (const auto& document : MarkRecordFiles::documents(recordDirectory)) {
        if (auto record = CaptureOneMarkRecord::decode(document)) {
            records.push_back(std::move(*record));
        }
    }
    std::ranges::stable_sort(records, std::ranges::greater(), &CaptureOneMarkRecord::date);
    return records;
}

} // namespace brevant
