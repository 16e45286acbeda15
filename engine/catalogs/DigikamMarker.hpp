#pragma once

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogMarker.hpp"
#include "engine/catalogs/DigikamCatalog.hpp"
#include "engine/catalogs/LibraryMarking.hpp"
#include "engine/catalogs/TagMarkRecord.hpp"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// What marking means in a digiKam library: the approved duplicates get the
// tag "Brevant Duplicates", made at the top of the tag tree when missing.
struct DigikamMarking : LibraryMarking<DigikamCatalog, DigikamPhoto, CatalogApplication::digikam> {
    static constexpr std::string_view kRecordFolder = "digiKam";

    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const Photo* photo);

    // Gives the item the tag, making the tag first when the library has
    // none at the top of its tree.
    [[nodiscard]] static std::expected<Item, Failure> change(const SQLiteWriter& writer,
                                                             const Chosen& chosen, Date now);

    // Takes the tag off the item again where it still carries it, and the
    // tag itself away when this marking made it and nothing carries it now.
    [[nodiscard]] static std::expected<void, Failure> undo(const SQLiteWriter& writer,
                                                           const Item& item);
};

// Tags the approved duplicates of a digiKam library; the user then deletes
// them in digiKam.
struct DigikamMarker : CatalogMarker<DigikamMarking> {
    static constexpr std::string_view kAlreadyTagged =
        "Already tagged Brevant Duplicates in digiKam.";
    static constexpr std::string_view kNotConnected = "Its drive is not connected.";
    static constexpr std::string_view kFinishNote =
        "Open digiKam, choose the tag Brevant Duplicates in the Tags view to look them over, then "
        "select them and press Delete to move them to digiKam's Trash.";
    static constexpr std::string_view kUndoNote =
        "Undo takes the tag Brevant Duplicates off again. digiKam must be closed, and photos you "
        "have since deleted in digiKam cannot come back from here.";

    static constexpr CatalogKindTexts kTexts{
        .key = "digikam",
        .name = "digiKam",
        .describedAs = "a digiKam library (digikam4.db)",
        .chooseFolder = "Choose digiKam's database folder.",
        .explainsWork = true,
        .settingsKey = "digikam",
        .chooseTip = "Choose the folder digiKam's digikam4.db is in",
        .reading = "Brevant reads the library without changing it and compares the photo files it "
                   "lists. digiKam may stay open while it does.",
        .alreadyMarkedHeading = "Already tagged Brevant Duplicates in digiKam",
        .notCatalogPhotos = "Only photos from a digiKam library can be tagged there.",
        .trashRefused = "Photos in a digiKam library are never moved to the Trash from here. Tag "
                        "them Brevant Duplicates in digiKam instead.",
        .applicationOpen =
            "Quit digiKam first. Its library is only changed while digiKam is closed.",
        .finishNote = kFinishNote,
        .undoNote = kUndoNote,
        .question = "Tag {} Brevant Duplicates in digiKam? [y/N]",
        .marked = "Tagged {} Brevant Duplicates in digiKam.",
        .planned = "tagged Brevant Duplicates in digiKam",
        .stillMarked = "tagged Brevant Duplicates",
        .givenBack = "tags",
        .undone = "The tag Brevant Duplicates was taken off again.",
        .command = "Tag in digiKam…",
        .verb = "Tag",
        .done = "{} tagged Brevant Duplicates",
        .untestedNotice =
            "This digiKam version is new to Brevant (its database is version {}): you can review "
            "its copies here, but Brevant tags nothing in a database version it has not been "
            "tested with."};
};

} // namespace brevant
