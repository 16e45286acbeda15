#include "CaptureOneMarker.hpp"

#include "engine/platform/DataFolder.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace brevant {

namespace {

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

} // namespace

std::string CaptureOneMarker::defaultRecordDirectory() {
    return platform::DataFolder::current().markings() + "/" +
           std::string(CaptureOneMarking::kRecordFolder);
}

std::string CaptureOneMarker::metadataQuery(std::int64_t variantID, std::int64_t imageID) {
    return fmt::format(
        "SELECT m.Z_PK, m.ZCOLOR_TAG_INDEX FROM ZVARIANT v\n"
        "JOIN ZVARIANTLAYER l ON l.Z_PK IN (v.ZADJUSTMENTLAYER, v.ZCOMBINEDSETTINGS)\n"
        "JOIN ZVARIANTMETADATA m ON m.Z_PK = l.ZMETADATA\n"
        "WHERE v.Z_PK = {} AND v.ZIMAGE = {} ORDER BY l.Z_PK",
        variantID, imageID);
}

std::optional<std::string_view> CaptureOneMarking::recheck(const PlannedRemoval& removal,
                                                           const CaptureOnePhoto* photo) {
    if (photo == nullptr || photo->path != removal.path) {
        return CatalogRecheck::kNotInCatalog;
    }
    if (!CatalogRecheck::isUnchanged(removal.path, removal.snapshot)) {
        return CatalogRecheck::kChanged;
    }
    if (photo->isTrashed) {
        return CaptureOneMarker::kInTrash;
    }
    const auto& tags = photo->ref.colorTags;
    if (std::ranges::find(tags, CaptureOneCatalog::kRed) != tags.end()) {
        return CaptureOneMarker::kAlreadyRed;
    }
    if (photo->ref.variants > 1) {
        return CaptureOneMarker::kSecondVariant;
    }
    if (std::ranges::any_of(tags, [](int tag) { return tag != 0; })) {
        return CaptureOneMarker::kHasColorTag;
    }
    if (!CatalogRecheck::hasKeeperLeft(removal)) {
        return CatalogRecheck::kNoKeeperLeft;
    }
    return std::nullopt;
}

std::expected<CaptureOneMarking::Item, CaptureOneMarking::Failure>
CaptureOneMarking::change(const SQLiteWriter& writer, const Chosen& chosen, Date now) {
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

std::optional<std::string> CaptureOneMarking::undoDatabase(const std::string& catalog) {
    if (!FileSnapshot::read(catalog)) {
        return std::nullopt;
    }
    return CaptureOneCatalog::database(catalog);
}

// An item whose rows do not all carry the Red tag any more was retagged by
// the user since; it is left whole.
std::expected<void, CaptureOneMarking::Failure> CaptureOneMarking::undo(const SQLiteWriter& writer,
                                                                        const Item& item) {
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

} // namespace brevant
