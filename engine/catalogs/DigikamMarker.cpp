#include "DigikamMarker.hpp"

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PathRules.hpp"

#include <fmt/format.h>

namespace brevant {

namespace {

// The tags this connection made, kept in its own temporary table so that
// every item of one marking knows the tag is new, and the file holds none
// of it.
constexpr std::string_view kMadeTable = "temp.brevant_made_tags";

std::string tagQuery() {
    return fmt::format("SELECT id FROM Tags WHERE pid = 0 AND name = {}",
                       SQLiteWriter::quoted(kDuplicatesTag));
}

// The first column of the first row; 0 when there is none (no id is 0).
std::expected<std::int64_t, SQLiteWriter::Failure> firstInteger(const SQLiteWriter& writer,
                                                                const std::string& sql) {
    auto rows = writer.rows(sql);
    if (!rows) {
        return std::unexpected(rows.error());
    }
    if (rows->empty()) {
        return 0;
    }
    return SQLiteValues::integer(SQLiteValues::column(rows->front(), 0));
}

struct Tag {
    std::int64_t id = 0;
    bool created = false;
};

// The duplicates tag at the top of the tree, made when missing; digiKam's
// trigger on Tags files it into TagsTree.
std::expected<Tag, SQLiteWriter::Failure> duplicatesTag(const SQLiteWriter& writer) {
    if (auto made =
            writer.run(fmt::format("CREATE TABLE IF NOT EXISTS {} (id INTEGER)", kMadeTable));
        !made) {
        return std::unexpected(made.error());
    }
    auto existing = firstInteger(writer, tagQuery());
    if (!existing) {
        return std::unexpected(existing.error());
    }
    if (*existing != 0) {
        auto mine = firstInteger(
            writer, fmt::format("SELECT COUNT(*) FROM {} WHERE id = {}", kMadeTable, *existing));
        if (!mine) {
            return std::unexpected(mine.error());
        }
        return Tag{*existing, *mine > 0};
    }
    if (auto inserted = writer.run(fmt::format("INSERT INTO Tags (pid, name) VALUES (0, {})",
                                               SQLiteWriter::quoted(kDuplicatesTag)));
        !inserted) {
        return std::unexpected(inserted.error());
    }
    auto id = firstInteger(writer, tagQuery());
    if (!id) {
        return std::unexpected(id.error());
    }
    if (*id == 0) {
        return std::unexpected(SQLiteWriter::Failure{"The tag could not be made."});
    }
    if (auto noted = writer.run(fmt::format("INSERT INTO {} (id) VALUES ({})", kMadeTable, *id));
        !noted) {
        return std::unexpected(noted.error());
    }
    return Tag{*id, true};
}

} // namespace

std::optional<std::string_view> DigikamMarking::recheck(const PlannedRemoval& removal,
                                                        const DigikamPhoto* photo) {
    if (photo != nullptr && photo->notConnected) {
        return DigikamMarker::kNotConnected;
    }
    if (photo == nullptr || photo->path != removal.path) {
        return CatalogRecheck::kNotInCatalog;
    }
    if (!CatalogRecheck::isUnchanged(removal.path, removal.snapshot)) {
        return CatalogRecheck::kChanged;
    }
    if (photo->isTagged) {
        return DigikamMarker::kAlreadyTagged;
    }
    if (!CatalogRecheck::hasKeeperLeft(removal)) {
        return CatalogRecheck::kNoKeeperLeft;
    }
    return std::nullopt;
}

std::expected<std::string, DigikamMarking::Failure>
DigikamMarking::backUp(const std::string& catalog, const Catalog& /*fresh*/, Date now) {
    auto backups = CatalogBackup::folder(catalog);
    if (!backups) {
        return std::unexpected(backups.error());
    }
    std::string name = PathRules::lastComponent(catalog);
    auto dot = name.rfind('.');
    std::string stem = dot == std::string::npos ? name : name.substr(0, dot);
    std::string extension = dot == std::string::npos ? "" : name.substr(dot + 1);
    std::string target =
        CatalogBackup::freeName(*backups, stem, CatalogBackup::dateText(now), extension);
    if (auto copied = CatalogBackup::copyDatabase(catalog, target); !copied) {
        return std::unexpected(copied.error());
    }
    return target;
}

std::expected<DigikamMarking::Item, DigikamMarking::Failure>
DigikamMarking::change(const SQLiteWriter& writer, const Chosen& chosen, Date /*now*/) {
    auto tag = duplicatesTag(writer);
    if (!tag) {
        return std::unexpected(tag.error());
    }
    Item item{.imageID = chosen.imageID,
              .path = chosen.path,
              .tagID = tag->id,
              .tagCreated = tag->created};
    auto added =
        writer.run(fmt::format("INSERT OR IGNORE INTO ImageTags (imageid, tagid) VALUES ({}, {})",
                               chosen.imageID, tag->id));
    if (!added) {
        return std::unexpected(added.error());
    }
    if (*added > 0) {
        item.taggedIDs.push_back(chosen.imageID);
    }
    return item;
}

std::optional<std::string> DigikamMarking::undoDatabase(const std::string& catalog) {
    if (!FileSnapshot::read(catalog)) {
        return std::nullopt;
    }
    return catalog;
}

std::expected<void, DigikamMarking::Failure> DigikamMarking::undo(const SQLiteWriter& writer,
                                                                  const Item& item) {
    for (auto id : item.taggedIDs) {
        if (auto removed = writer.run(fmt::format(
                "DELETE FROM ImageTags WHERE imageid = {} AND tagid = {}", id, item.tagID));
            !removed) {
            return std::unexpected(removed.error());
        }
    }
    if (!item.tagCreated) {
        return {};
    }
    // Only the tag this marking made, once no item carries it and the user
    // has put no tag under it.
    auto removed =
        writer.run(fmt::format("DELETE FROM Tags WHERE id = {0} AND pid = 0 AND name = {1}\n"
                               "  AND NOT EXISTS (SELECT 1 FROM ImageTags WHERE tagid = {0})\n"
                               "  AND NOT EXISTS (SELECT 1 FROM TagsTree WHERE pid = {0})",
                               item.tagID, SQLiteWriter::quoted(kDuplicatesTag)));
    if (!removed) {
        return std::unexpected(removed.error());
    }
    return {};
}

} // namespace brevant
