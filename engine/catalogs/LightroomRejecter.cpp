#include "LightroomRejecter.hpp"

#include "engine/platform/DataFolder.hpp"

#include <fmt/format.h>

namespace brevant {

std::string LightroomRejecter::defaultRecordDirectory() {
    return platform::DataFolder::current().markings() + "/" +
           std::string(LightroomMarking::kRecordFolder);
}

std::optional<std::string_view> LightroomMarking::recheck(const PlannedRemoval& removal,
                                                          const LightroomPhoto* photo) {
    if (photo == nullptr || photo->path != removal.path) {
        return CatalogRecheck::kNotInCatalog;
    }
    if (!CatalogRecheck::isUnchanged(removal.path, removal.snapshot)) {
        return CatalogRecheck::kChanged;
    }
    if (photo->ref.pick < 0) {
        return LightroomRejecter::kAlreadyRejected;
    }
    if (photo->ref.virtualCopies >= 1) {
        return LightroomRejecter::kHasVirtualCopy;
    }
    if (!CatalogRecheck::hasKeeperLeft(removal)) {
        return CatalogRecheck::kNoKeeperLeft;
    }
    return std::nullopt;
}

std::expected<LightroomMarking::Chosen, LightroomMarking::Failure>
LightroomMarking::change(const SQLiteWriter& writer, const Chosen& chosen, Date /*now*/) {
    auto updated = CatalogTransaction::updateOne(
        writer,
        fmt::format("UPDATE Adobe_images SET pick = -1.0 WHERE id_local = {} AND "
                    "masterImage IS NULL",
                    chosen.imageID),
        std::string(LightroomRejecter::kNotWhereScanned));
    if (!updated) {
        return std::unexpected(updated.error());
    }
    return chosen;
}

// Only a photo still Rejected gets its flag back: any other flag was set by
// the user since, and a photo deleted in Lightroom matches no row. Lightroom
// keeps flags as real numbers, so the flag goes back as one ("1.0", not "1"),
// stored exactly as it was before the marking.
std::expected<void, LightroomMarking::Failure> LightroomMarking::undo(const SQLiteWriter& writer,
                                                                      const Chosen& item) {
    auto updated = writer.run(
        fmt::format("UPDATE Adobe_images SET pick = {}.0 WHERE id_local = {} AND pick < 0",
                    item.previousPick, item.imageID));
    if (!updated) {
        return std::unexpected(updated.error());
    }
    return {};
}

} // namespace brevant
