#pragma once

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogMarker.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/catalogs/LightroomMarkRecord.hpp"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// What marking means in a Lightroom Classic catalog: the approved duplicates
// get Lightroom's Rejected flag, as if the user had pressed X in Lightroom.
struct LightroomMarking {
    using Catalog = LightroomCatalog;
    using Photo = LightroomPhoto;
    using Record = LightroomMarkRecord;
    using Chosen = LightroomMarkRecord::Item;
    using Failure = SQLiteWriter::Failure;

    static constexpr CatalogSource::Application kApplication =
        CatalogSource::Application::lightroom;
    static constexpr std::string_view kRecordFolder = "Lightroom Classic";

    [[nodiscard]] static std::int64_t photoID(const Photo& photo) { return photo.ref.imageID; }

    [[nodiscard]] static bool isOpen(const std::string& catalog) {
        return LightroomCatalog::isOpen(catalog);
    }

    [[nodiscard]] static std::expected<Catalog, CatalogReadError> read(const std::string& catalog) {
        return LightroomCatalog::read(catalog);
    }

    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const Photo* photo);

    [[nodiscard]] static Chosen choose(const Photo& photo) {
        return {photo.ref.imageID, photo.path, photo.ref.pick};
    }

    [[nodiscard]] static std::expected<std::string, Failure>
    backUp(const std::string& catalog, const Catalog& /*fresh*/, Date now) {
        return CatalogBackup::backUpLightroom(catalog, now);
    }

    [[nodiscard]] static std::string database(const std::string& catalog,
                                              const Catalog& /*fresh*/) {
        return catalog;
    }

    // Flags one photo Rejected; fails unless exactly its row changed.
    [[nodiscard]] static std::expected<Chosen, Failure> change(const SQLiteWriter& writer,
                                                               const Chosen& chosen, Date now);

    // The catalog file itself; when it is gone the transaction says so.
    [[nodiscard]] static std::optional<std::string> undoDatabase(const std::string& catalog) {
        return catalog;
    }

    [[nodiscard]] static std::expected<void, Failure> undo(const SQLiteWriter& writer,
                                                           const Chosen& item);
};

// Marks the approved duplicates of a Lightroom Classic catalog Rejected; the
// user then deletes them in Lightroom.
struct LightroomRejecter : CatalogMarker<LightroomMarking> {
    // The application's record folder inside Brevant's data folder.
    [[nodiscard]] static std::string defaultRecordDirectory();

    // The re-check of one planned photo against the fresh catalog; nothing
    // when it may be marked.
    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const LightroomPhoto* photo) {
        return LightroomMarking::recheck(removal, photo);
    }

    static constexpr std::string_view kAlreadyRejected = "Already Rejected in Lightroom.";
    static constexpr std::string_view kHasVirtualCopy = "It has a virtual copy now, so it is kept.";
    static constexpr std::string_view kNotWhereScanned =
        "Lightroom's catalog did not have it where the scan saw it.";
    static constexpr std::string_view kFreedNothing =
        "No space has been freed yet. Open Lightroom Classic, filter by Rejected to look them "
        "over, then choose Photo ▸ Delete Rejected Photos.";
    static constexpr std::string_view kUndoNote =
        "Undo sets each photo's flag back to what it was. Lightroom Classic must be closed, and "
        "photos you have since deleted in Lightroom cannot come back from here.";

    static constexpr CatalogKindTexts kTexts{
        .key = "lightroomClassic",
        .name = "Lightroom Classic",
        .describedAs = "a Lightroom Classic catalog (.lrcat)",
        .chooseFolder = "Choose the folder the catalog file is in.",
        .explainsWork = true,
        .settingsKey = "lightroom",
        .chooseTip = "Choose the folder the .lrcat catalog file is in",
        .reading = "Brevant reads the catalog without changing it and compares the photo files it "
                   "lists. Lightroom Classic may stay open while it does.",
        .alreadyMarkedHeading = "Already Rejected in Lightroom Classic",
        .notCatalogPhotos = "Only photos from a Lightroom Classic catalog can be marked Rejected.",
        .trashRefused = "Photos in a Lightroom Classic catalog are never moved to the Trash from "
                        "here. Mark them Rejected in Lightroom instead.",
        .applicationOpen = "Quit Lightroom Classic first. Its catalog is only changed while "
                           "Lightroom is closed.",
        .finishNote = kFreedNothing,
        .undoNote = kUndoNote,
        .question = "Mark {} Rejected in Lightroom Classic? [y/N]",
        .marked = "Marked {} Rejected in Lightroom Classic.",
        .planned = "marked Rejected in Lightroom Classic",
        .stillMarked = "Rejected",
        .givenBack = "flags",
        .undone = "The photos have their earlier flags back.",
        .command = "Mark Rejected in Lightroom Classic…",
        .verb = "Mark Rejected",
        .done = "{} marked Rejected",
        .untestedNotice =
            "This Lightroom version is new to Brevant (its catalog is version {}): you can review "
            "its copies here, but Brevant marks nothing Rejected in a catalog version it has not "
            "been tested with."};
};

} // namespace brevant
