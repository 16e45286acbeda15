#pragma once

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogMarker.hpp"
#include "engine/catalogs/LibraryMarking.hpp"
#include "engine/catalogs/ShotwellCatalog.hpp"
#include "engine/catalogs/TagMarkRecord.hpp"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// What marking means in a Shotwell library: the approved duplicates join
// the photo list of the tag "Brevant Duplicates" in its TagTable.
struct ShotwellMarking
    : LibraryMarking<ShotwellCatalog, ShotwellPhoto, CatalogApplication::shotwell> {
    static constexpr std::string_view kRecordFolder = "Shotwell";

    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const Photo* photo);

    // Adds the photo to the tag's list, making the tag first when the
    // library has none.
    [[nodiscard]] static std::expected<Item, Failure> change(const SQLiteWriter& writer,
                                                             const Chosen& chosen, Date now);

    // Takes the photo out of the tag's list again, and the tag away when
    // this marking made it and nothing carries it any more.
    [[nodiscard]] static std::expected<void, Failure> undo(const SQLiteWriter& writer,
                                                           const Item& item);
};

// Tags the approved duplicates of a Shotwell library "Brevant Duplicates";
// the user then deletes them in Shotwell.
struct ShotwellMarker : CatalogMarker<ShotwellMarking> {
    [[nodiscard]] static std::string defaultRecordDirectory();

    static constexpr std::string_view kInTrash = "Already in Shotwell's Trash.";
    static constexpr std::string_view kAlreadyTagged =
        "Already tagged Brevant Duplicates in Shotwell.";
    static constexpr std::string_view kFinishNote =
        "Open Shotwell, choose the tag Brevant Duplicates to look them over, then select them and "
        "press Delete to move them to Shotwell's Trash, where you can delete them for good.";
    static constexpr std::string_view kUndoNote =
        "Undo takes the tag Brevant Duplicates off again. Shotwell must be closed, and photos you "
        "have since deleted in Shotwell cannot come back from here.";

    static constexpr CatalogKindTexts kTexts{
        .key = "shotwell",
        .name = "Shotwell",
        .describedAs = "a Shotwell library (photo.db)",
        .chooseFolder = "Choose the folder the library is in.",
        .explainsWork = true,
        .settingsKey = "shotwell",
        .chooseTip = "Choose the folder Shotwell's photo.db is in",
        .reading = "Brevant reads the library without changing it and compares the image files it "
                   "lists. Shotwell may stay open while it does.",
        .alreadyMarkedHeading = "Already tagged Brevant Duplicates in Shotwell",
        .notCatalogPhotos = "Only photos from a Shotwell library can be tagged there.",
        .trashRefused = "Photos in a Shotwell library are never moved to the Trash from here. Tag "
                        "them Brevant Duplicates in Shotwell instead.",
        .applicationOpen =
            "Quit Shotwell first. Its library is only changed while Shotwell is closed.",
        .finishNote = kFinishNote,
        .undoNote = kUndoNote,
        .question = "Tag {} Brevant Duplicates in Shotwell? [y/N]",
        .marked = "Tagged {} Brevant Duplicates in Shotwell.",
        .planned = "tagged Brevant Duplicates in Shotwell",
        .stillMarked = "tagged Brevant Duplicates",
        .givenBack = "tags",
        .undone = "The tag Brevant Duplicates was taken off again.",
        .command = "Tag in Shotwell…",
        .verb = "Tag",
        .done = "{} tagged Brevant Duplicates",
        .untestedNotice =
            "This Shotwell version is new to Brevant (its library is version {}): you can "
            "review its copies here, but Brevant tags nothing in a library version it has not "
            "been tested with."};
};

} // namespace brevant
