#include "DigikamMarker.hpp"

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/LibraryTag.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PathRules.hpp"

#include <fmt/format.h>

namespace brevant {

namespace {

// At the top of the tree; digiKam's trigger on Tags files a new one into
// TagsTree.
constexpr std::string_view kFindTag = "SELECT id FROM Tags WHERE pid = 0 AND name = {0}";
constexpr std::string_view kMakeTag = "INSERT INTO Tags (pid, name) VALUES (0, {0})";

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

std::expected<DigikamMarking::Item, DigikamMarking::Failure>
DigikamMarking::change(const SQLiteWriter& writer, const Chosen& chosen, Date /*now*/) {
    auto item = LibraryTag::item(writer, chosen.imageID, chosen.path, kFindTag, kMakeTag);
    if (!item) {
        return std::unexpected(item.error());
    }
    auto added =
        writer.run(fmt::format("INSERT OR IGNORE INTO ImageTags (imageid, tagid) VALUES ({}, {})",
                               chosen.imageID, item->tagID));
    if (!added) {
        return std::unexpected(added.error());
    }
    if (*added > 0) {
        item->taggedIDs.push_back(chosen.imageID);
    }
    return item;
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
