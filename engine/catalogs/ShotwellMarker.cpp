#include "ShotwellMarker.hpp"

#include "engine/catalogs/LibraryTag.hpp"
#include "engine/catalogs/ShotwellTagList.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <cmath>
#include <fmt/format.h>

namespace brevant {

namespace {

using Failure = SQLiteWriter::Failure;

// The tag's name as an SQL literal; it holds no quote.
std::string tagLiteral() {
    return fmt::format("'{}'", kDuplicatesTag);
}

std::string listLiteral(const ShotwellTagList& list) {
    // Source ids are letters, digits and dashes only.
    std::string text = list.text();
    return text.empty() ? std::string("NULL") : fmt::format("'{}'", text);
}

struct TagRow {
    std::int64_t id = 0;
    ShotwellTagList list;
};

std::expected<std::optional<TagRow>, Failure> tagRow(const SQLiteWriter& writer,
                                                     const std::string& where) {
    auto rows = writer.rows("SELECT id, photo_id_list FROM TagTable WHERE " + where);
    if (!rows) {
        return std::unexpected(rows.error());
    }
    if (rows->empty()) {
        return std::nullopt;
    }
    const auto& row = rows->front();
    return TagRow{SQLiteValues::integer(SQLiteValues::column(row, 0)),
                  ShotwellTagList::parse(SQLiteValues::text(SQLiteValues::column(row, 1)))};
}

// At the top of Shotwell's tag tree (a name without a leading slash).
std::expected<std::pair<TagRow, bool>, Failure> duplicatesTag(const SQLiteWriter& writer,
                                                              Date now) {
    auto tag = LibraryTag::foundOrMade(
        writer, "SELECT id FROM TagTable WHERE name = {0}",
        fmt::format(
            "INSERT INTO TagTable (name, photo_id_list, time_created) VALUES ({{0}}, NULL, {})",
            static_cast<std::int64_t>(std::floor(now.unixSeconds()))));
    if (!tag) {
        return std::unexpected(tag.error());
    }
    auto row = tagRow(writer, fmt::format("id = {}", tag->id));
    if (!row) {
        return std::unexpected(row.error());
    }
    std::optional<TagRow> found = std::move(*row);
    if (!found) {
        return std::unexpected(Failure{"The tag could not be made."});
    }
    return std::pair{std::move(*found), tag->created};
}

std::expected<void, Failure> writeList(const SQLiteWriter& writer, std::int64_t tagID,
                                       const ShotwellTagList& list) {
    return CatalogTransaction::updateOne(
        writer,
        fmt::format("UPDATE TagTable SET photo_id_list = {} WHERE id = {}", listLiteral(list),
                    tagID),
        fmt::format("Shotwell's tag {} was not where it was read.", kDuplicatesTag));
}

} // namespace

std::string ShotwellMarker::defaultRecordDirectory() {
    return platform::DataFolder::current().markings() + "/" +
           std::string(ShotwellMarking::kRecordFolder);
}

std::optional<std::string_view> ShotwellMarking::recheck(const PlannedRemoval& removal,
                                                         const ShotwellPhoto* photo) {
    if (photo == nullptr || photo->path != removal.path) {
        return CatalogRecheck::kNotInCatalog;
    }
    if (!CatalogRecheck::isUnchanged(removal.path, removal.snapshot)) {
        return CatalogRecheck::kChanged;
    }
    if (photo->isTrashed) {
        return ShotwellMarker::kInTrash;
    }
    if (photo->isMarked) {
        return ShotwellMarker::kAlreadyTagged;
    }
    if (!CatalogRecheck::hasKeeperLeft(removal)) {
        return CatalogRecheck::kNoKeeperLeft;
    }
    return std::nullopt;
}

std::expected<ShotwellMarking::Item, Failure>
ShotwellMarking::change(const SQLiteWriter& writer, const Chosen& chosen, Date now) {
    auto tag = duplicatesTag(writer, now);
    if (!tag) {
        return std::unexpected(tag.error());
    }
    auto& [row, created] = *tag;
    Item item{
        .imageID = chosen.imageID, .path = chosen.path, .tagID = row.id, .tagCreated = created};
    if (row.list.addPhoto(chosen.imageID)) {
        if (auto written = writeList(writer, row.id, row.list); !written) {
            return std::unexpected(written.error());
        }
        item.taggedIDs.push_back(chosen.imageID);
    }
    return item;
}

// A tag the user renamed or deleted since is left as the user left it.
std::expected<void, Failure> ShotwellMarking::undo(const SQLiteWriter& writer, const Item& item) {
    auto found = tagRow(writer, fmt::format("id = {} AND name = {}", item.tagID, tagLiteral()));
    if (!found) {
        return std::unexpected(found.error());
    }
    std::optional<TagRow> existing = std::move(*found);
    if (!existing) {
        return {};
    }
    TagRow& row = *existing;
    bool changed = false;
    for (auto id : item.taggedIDs) {
        changed = row.list.removePhoto(id) || changed;
    }
    if (item.tagCreated && row.list.entries.empty()) {
        return CatalogTransaction::updateOne(
            writer, fmt::format("DELETE FROM TagTable WHERE id = {}", row.id),
            fmt::format("Shotwell's tag {} was not where it was read.", kDuplicatesTag));
    }
    if (!changed) {
        return {};
    }
    return writeList(writer, row.id, row.list);
}

} // namespace brevant
