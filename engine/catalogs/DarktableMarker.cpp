#include "DarktableMarker.hpp"

#include "engine/scan/FileSnapshot.hpp"

#include <fmt/format.h>

namespace brevant {

namespace {

// Remembers on the connection, until it closes, that this marking made the
// tag: every item then says so, and whichever item's undo comes last finds
// the tag unused and takes it away. Nothing of it reaches either file.
constexpr std::string_view kMadeTags = "temp.brevant_made_tags";

using Failure = DarktableMarking::Failure;

std::expected<std::optional<std::int64_t>, Failure> firstInteger(const SQLiteWriter& writer,
                                                                 const std::string& sql) {
    auto rows = writer.rows(sql);
    if (!rows) {
        return std::unexpected(rows.error());
    }
    if (rows->empty() || !SQLiteValues::column(rows->front(), 0)) {
        return std::optional<std::int64_t>();
    }
    return std::optional(SQLiteValues::integer(SQLiteValues::column(rows->front(), 0)));
}

// The tag's id, made at the top of the tag tree as darktable makes a tag
// when data.db has none.
std::expected<std::int64_t, Failure> foundOrMade(const SQLiteWriter& writer) {
    std::string find = fmt::format("SELECT id FROM data.tags WHERE name = {}",
                                   SQLiteWriter::quoted(kDuplicatesTag));
    auto found = firstInteger(writer, find);
    if (!found) {
        return std::unexpected(found.error());
    }
    if (auto id = *found) {
        return *id;
    }
    if (auto made = writer.run(fmt::format("INSERT INTO data.tags (id, name) VALUES (NULL, {})",
                                           SQLiteWriter::quoted(kDuplicatesTag)));
        !made) {
        return std::unexpected(made.error());
    }
    if (auto noted = writer.run(fmt::format("INSERT INTO {} (id) SELECT id FROM data.tags WHERE "
                                            "name = {}",
                                            kMadeTags, SQLiteWriter::quoted(kDuplicatesTag)));
        !noted) {
        return std::unexpected(noted.error());
    }
    auto made = firstInteger(writer, find);
    if (!made) {
        return std::unexpected(made.error());
    }
    if (auto id = *made) {
        return *id;
    }
    return std::unexpected(Failure{"the tag could not be made"});
}

// The tag's id, and whether this marking made it.
std::expected<std::pair<std::int64_t, bool>, Failure> duplicatesTag(const SQLiteWriter& writer) {
    if (auto table = writer.run(
            fmt::format("CREATE TEMP TABLE IF NOT EXISTS {} (id INTEGER PRIMARY KEY)", kMadeTags));
        !table) {
        return std::unexpected(table.error());
    }
    auto id = foundOrMade(writer);
    if (!id) {
        return std::unexpected(id.error());
    }
    auto made =
        firstInteger(writer, fmt::format("SELECT id FROM {} WHERE id = {}", kMadeTags, *id));
    if (!made) {
        return std::unexpected(made.error());
    }
    return std::pair{*id, made->has_value()};
}

} // namespace

std::optional<std::string_view> DarktableMarking::recheck(const PlannedRemoval& removal,
                                                          const DarktablePhoto* photo) {
    if (photo == nullptr || photo->path != removal.path) {
        return CatalogRecheck::kNotInCatalog;
    }
    if (!CatalogRecheck::isUnchanged(removal.path, removal.snapshot)) {
        return CatalogRecheck::kChanged;
    }
    if (photo->isTagged) {
        return DarktableMarker::kAlreadyTagged;
    }
    if (!CatalogRecheck::hasKeeperLeft(removal)) {
        return CatalogRecheck::kNoKeeperLeft;
    }
    return std::nullopt;
}

CatalogTransaction::Database DarktableMarking::database(const std::string& catalog,
                                                        const Catalog& fresh) {
    return {.path = catalog,
            .attached =
                CatalogTransaction::Database::Attached{fresh.dataURL, std::string(kDataName)}};
}

std::expected<DarktableMarking::Item, DarktableMarking::Failure>
DarktableMarking::change(const SQLiteWriter& writer, const Chosen& chosen, Date /*now*/) {
    auto tag = duplicatesTag(writer);
    if (!tag) {
        return std::unexpected(tag.error());
    }
    Item item{.imageID = chosen.imageID,
              .path = chosen.path,
              .tagID = tag->first,
              .tagCreated = tag->second};
    for (auto version : chosen.versionIDs) {
        auto carried = firstInteger(writer, fmt::format("SELECT 1 FROM main.tagged_images WHERE "
                                                        "imgid = {} AND tagid = {}",
                                                        version, item.tagID));
        if (!carried) {
            return std::unexpected(carried.error());
        }
        if (*carried) {
            continue;
        }
        // After every other assignment, in darktable's own numbering.
        auto tagged = CatalogTransaction::updateOne(
            writer,
            fmt::format("INSERT INTO main.tagged_images (imgid, tagid, position) SELECT {}, {}, "
                        "(IFNULL(MAX(position), 0) & 0xFFFFFFFF00000000) + (1 << 32) FROM "
                        "main.tagged_images",
                        version, item.tagID),
            "the tag could not be given");
        if (!tagged) {
            return std::unexpected(tagged.error());
        }
        item.taggedIDs.push_back(version);
    }
    return item;
}

std::optional<CatalogTransaction::Database>
DarktableMarking::undoDatabase(const std::string& catalog) {
    std::string data = DarktableCatalog::dataDatabase(catalog);
    if (!FileSnapshot::read(catalog) || !FileSnapshot::read(data)) {
        return std::nullopt;
    }
    return CatalogTransaction::Database{
        .path = catalog,
        .attached = CatalogTransaction::Database::Attached{data, std::string(kDataName)}};
}

std::expected<void, DarktableMarking::Failure> DarktableMarking::undo(const SQLiteWriter& writer,
                                                                      const Item& item) {
    for (auto version : item.taggedIDs) {
        if (auto removed = writer.run(
                fmt::format("DELETE FROM main.tagged_images WHERE imgid = {} AND tagid = {}",
                            version, item.tagID));
            !removed) {
            return std::unexpected(removed.error());
        }
    }
    if (!item.tagCreated) {
        return {};
    }
    auto removed =
        writer.run(fmt::format("DELETE FROM data.tags WHERE id = {0} AND name = {1} AND NOT EXISTS "
                               "(SELECT 1 FROM main.tagged_images WHERE tagid = {0})",
                               item.tagID, SQLiteWriter::quoted(kDuplicatesTag)));
    if (!removed) {
        return std::unexpected(removed.error());
    }
    return {};
}

} // namespace brevant
