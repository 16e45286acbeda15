#include "DarktableMarker.hpp"

#include "engine/catalogs/LibraryTag.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <fmt/format.h>

namespace brevant {

namespace {

using Failure = DarktableMarking::Failure;

// At the top of the tag tree, as darktable makes a tag when data.db has
// none.
constexpr std::string_view kFindTag = "SELECT id FROM data.tags WHERE name = {0}";
constexpr std::string_view kMakeTag = "INSERT INTO data.tags (id, name) VALUES (NULL, {0})";

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
    auto item = LibraryTag::item(writer, chosen.imageID, chosen.path, kFindTag, kMakeTag);
    if (!item) {
        return std::unexpected(item.error());
    }
    for (auto version : chosen.versionIDs) {
        auto carried = writer.firstInteger(fmt::format("SELECT 1 FROM main.tagged_images WHERE "
                                                       "imgid = {} AND tagid = {}",
                                                       version, item->tagID));
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
                        version, item->tagID),
            "the tag could not be given");
        if (!tagged) {
            return std::unexpected(tagged.error());
        }
        item->taggedIDs.push_back(version);
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
