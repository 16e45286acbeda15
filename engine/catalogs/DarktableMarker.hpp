#pragma once

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogMarker.hpp"
#include "engine/catalogs/DarktableCatalog.hpp"
#include "engine/catalogs/LibraryMarking.hpp"
#include "engine/catalogs/TagMarkRecord.hpp"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// What marking means in a darktable library: every version of each approved
// duplicate gets the tag "Brevant Duplicates". The tag's name lives in
// data.db and its assignments in library.db, so data.db is attached and one
// transaction changes both.
struct DarktableMarking
    : LibraryMarking<DarktableCatalog, DarktablePhoto, CatalogApplication::darktable> {
    // A planned file that passed its re-check, with all its versions.
    struct Chosen {
        std::int64_t imageID = 0;
        std::vector<std::int64_t> versionIDs;
        std::string path;
    };

    static constexpr std::string_view kRecordFolder = "darktable";
    // How data.db is named on the library's connection, as darktable names
    // it too.
    static constexpr std::string_view kDataName = "data";

    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const Photo* photo);

    [[nodiscard]] static Chosen choose(const Photo& photo) {
        return {photo.ref.imageID, photo.ref.versionIDs, photo.path};
    }

    // Both databases, into one folder.
    [[nodiscard]] static std::expected<std::string, Failure>
    backUp(const std::string& catalog, const Catalog& fresh, Date now) {
        return CatalogBackup::backUpDarktable(catalog, fresh.dataURL, now);
    }

    [[nodiscard]] static CatalogTransaction::Database database(const std::string& catalog,
                                                               const Catalog& fresh);

    // Tags every version of the file, making the tag first when data.db has
    // none.
    [[nodiscard]] static std::expected<Item, Failure> change(const SQLiteWriter& writer,
                                                             const Chosen& chosen, Date now);

    // Both databases, while both are still there.
    [[nodiscard]] static std::optional<CatalogTransaction::Database>
    undoDatabase(const std::string& catalog);

    // Takes off the assignments the marking made that are still there, and
    // the tag when the marking made it and nothing carries it any more.
    [[nodiscard]] static std::expected<void, Failure> undo(const SQLiteWriter& writer,
                                                           const Item& item);
};

// Tags the approved duplicates of a darktable library "Brevant Duplicates";
// the user then removes or deletes them in darktable.
struct DarktableMarker : CatalogMarker<DarktableMarking> {
    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const DarktablePhoto* photo) {
        return DarktableMarking::recheck(removal, photo);
    }

    static constexpr std::string_view kAlreadyTagged =
        "Already tagged Brevant Duplicates in darktable.";
    static constexpr std::string_view kFinishNote =
        "Open darktable, pick the tag Brevant Duplicates in the collections module to look them "
        "over, then select them and remove or delete them there.";
    static constexpr std::string_view kUndoNote =
        "Undo takes the Brevant Duplicates tag off again. darktable must be closed, and photos "
        "you have since removed in darktable cannot come back from here.";

    static constexpr CatalogKindTexts kTexts{
        .key = "darktable",
        .name = "darktable",
        .describedAs = "a darktable library (library.db)",
        .chooseFolder = "Choose the folder darktable keeps it in.",
        .explainsWork = true,
        .settingsKey = "darktable",
        .chooseTip = "Choose the folder darktable's library.db is in",
        .reading = "Brevant reads the library without changing it and compares the image files "
                   "it lists. darktable may stay open while it does.",
        .alreadyMarkedHeading = "Already tagged Brevant Duplicates in darktable",
        .notCatalogPhotos = "Only photos from a darktable library can be tagged there.",
        .trashRefused = "Photos in a darktable library are never moved to the Trash from here. "
                        "Tag them Brevant Duplicates in darktable instead.",
        .applicationOpen = "Quit darktable first. Its library is only changed while darktable "
                           "is closed.",
        .finishNote = kFinishNote,
        .undoNote = kUndoNote,
        .question = "Tag {} Brevant Duplicates in darktable? [y/N]",
        .marked = "Tagged {} Brevant Duplicates in darktable.",
        .planned = "tagged Brevant Duplicates in darktable",
        .stillMarked = "tagged Brevant Duplicates",
        .givenBack = "tags",
        .undone = "The tag Brevant Duplicates was taken off again.",
        .command = "Tag in darktable…",
        .verb = "Tag",
        .done = "{} tagged Brevant Duplicates",
        .untestedNotice =
            "This darktable version is new to Brevant (its databases are {}): you can review its "
            "copies here, but Brevant tags nothing in a library version it has not been tested "
            "with."};
};

} // namespace brevant
