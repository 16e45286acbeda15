#pragma once

#include "engine/catalogs/CaptureOneCatalog.hpp"
#include "engine/catalogs/CaptureOneMarkRecord.hpp"
#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogMarker.hpp"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// What marking means in a Capture One catalog: the approved duplicates get
// the Red colour tag in the catalog's database.
struct CaptureOneMarking {
    // A planned image that passed its re-check, with the variant to tag.
    struct Chosen {
        std::int64_t imageID = 0;
        std::int64_t variantID = 0;
        std::string path;
    };

    using Catalog = CaptureOneCatalog;
    using Photo = CaptureOnePhoto;
    using Record = CaptureOneMarkRecord;
    using Item = CaptureOneMarkRecord::Item;
    using Failure = SQLiteWriter::Failure;

    static constexpr CatalogSource::Application kApplication =
        CatalogSource::Application::captureOne;
    static constexpr std::string_view kRecordFolder = "Capture One";

    [[nodiscard]] static std::int64_t photoID(const Photo& photo) { return photo.ref.imageID; }

    [[nodiscard]] static bool isOpen(const std::string& catalog) {
        return CaptureOneCatalog::isOpen(catalog);
    }

    [[nodiscard]] static std::expected<Catalog, CatalogReadError> read(const std::string& catalog) {
        return CaptureOneCatalog::read(catalog);
    }

    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const Photo* photo);

    [[nodiscard]] static Chosen choose(const Photo& photo) {
        return {photo.ref.imageID, photo.ref.variantID, photo.path};
    }

    // The package is backed up with its database only.
    [[nodiscard]] static std::expected<std::string, Failure>
    backUp(const std::string& catalog, const Catalog& fresh, Date now) {
        return CatalogBackup::backUpCaptureOne(catalog, fresh.databaseURL, now);
    }

    [[nodiscard]] static std::string database(const std::string& /*catalog*/,
                                              const Catalog& fresh) {
        return fresh.databaseURL;
    }

    // Tags the metadata rows of the image's first variant Red and sets its
    // modification date to `now`.
    [[nodiscard]] static std::expected<Item, Failure> change(const SQLiteWriter& writer,
                                                             const Chosen& chosen, Date now);

    // The package's database, while the package is still there.
    [[nodiscard]] static std::optional<std::string> undoDatabase(const std::string& catalog);

    // Puts back the earlier tags and date of an item whose rows all still
    // carry the Red tag; an item the user retagged since is left whole.
    [[nodiscard]] static std::expected<void, Failure> undo(const SQLiteWriter& writer,
                                                           const Item& item);
};

// Tags the approved duplicates of a Capture One catalog Red; the user then
// deletes them in Capture One.
struct CaptureOneMarker : CatalogMarker<CaptureOneMarking> {
    [[nodiscard]] static std::string defaultRecordDirectory();

    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const CaptureOnePhoto* photo) {
        return CaptureOneMarking::recheck(removal, photo);
    }

    // The metadata rows of a variant: those of its adjustment layer and of
    // its combined settings, once each, in layer order.
    [[nodiscard]] static std::string metadataQuery(std::int64_t variantID, std::int64_t imageID);

    static constexpr std::string_view kInTrash = "Already in Capture One's Trash.";
    static constexpr std::string_view kAlreadyRed = "Already tagged Red in Capture One.";
    static constexpr std::string_view kSecondVariant =
        "It has a second variant now, so it is kept.";
    static constexpr std::string_view kHasColorTag = "It has a colour tag now, so it is kept.";
    static constexpr std::string_view kNotWhereScanned =
        "Capture One's catalog did not have it where the scan saw it.";
    static constexpr std::string_view kFinishNote =
        "Open Capture One, filter by the Red colour tag to look them over, then select them and "
        "press Delete to move them to Capture One's Trash, where you can delete them for good.";
    static constexpr std::string_view kUndoNote =
        "Undo takes the Red tag off again. Capture One must be closed, and photos you have since "
        "deleted in Capture One cannot come back from here.";

    static constexpr CatalogKindTexts kTexts{
        .key = "captureOne",
        .name = "Capture One",
        .describedAs = "a Capture One catalog (.cocatalog)",
        .chooseFolder = "Choose the folder the catalog is in.",
        .settingsKey = "captureOne",
        .chooseTip = "Choose the folder the .cocatalog catalog is in",
        .reading = "Brevant reads the catalog without changing it and compares the image files it "
                   "lists. Capture One may stay open while it does.",
        .alreadyMarkedHeading = "Already tagged Red in Capture One",
        .notCatalogPhotos = "Only photos from a Capture One catalog can be tagged there.",
        .trashRefused = "Photos in a Capture One catalog are never moved to the Trash from here. "
                        "Tag them Red in Capture One instead.",
        .applicationOpen = "Quit Capture One first. Its catalog is only changed while Capture "
                           "One is closed.",
        .finishNote = kFinishNote,
        .undoNote = kUndoNote,
        .question = "Tag {} Red in Capture One? [y/N]",
        .marked = "Tagged {} Red in Capture One.",
        .planned = "tagged Red in Capture One",
        .stillMarked = "tagged Red",
        .givenBack = "tags and dates",
        .undone = "The Red tags were taken off again.",
        .command = "Tag Red in Capture One…",
        .verb = "Tag Red",
        .done = "{} tagged Red",
        .untestedNotice =
            "This Capture One version is new to Brevant (its catalog is version {}): you can "
            "review its copies here, but Brevant tags nothing Red in a catalog version it has not "
            "been tested with."};
};

} // namespace brevant
