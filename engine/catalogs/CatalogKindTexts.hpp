#pragma once

#include "engine/catalogs/CatalogSource.hpp"

#include <string>
#include <string_view>

namespace brevant {

// The sentences that name one kind of catalog and what marking does there.
// Each kind keeps its own as a constant beside its marker; `of` is the one
// place that knows them all.
struct CatalogKindTexts {
    // How records and documents name the kind: "lightroomClassic".
    std::string_view key;
    // "Lightroom Classic".
    std::string_view name;
    // What its catalog is, with how its file is named: "a Lightroom Classic
    // catalog (.lrcat)".
    std::string_view describedAs;
    // Where to look when a folder holds none: "Choose the folder the catalog
    // file is in."
    std::string_view chooseFolder;
    // The keeper's reason names the work done on it in the catalog.
    bool explainsWork = false;
    // How the window stores the kind as a scope, and its catalog under
    // "photoCleanup.<settingsKey>Catalog": "lightroom".
    std::string_view settingsKey;
    // The window's words for choosing the catalog's folder, and how the
    // catalog is read.
    std::string_view chooseTip;
    std::string_view reading;
    // "Already Rejected in Lightroom Classic".
    std::string_view alreadyMarkedHeading;
    std::string_view notCatalogPhotos;
    // Why its photos are not moved to the Trash from a cleanup.
    std::string_view trashRefused;
    std::string_view applicationOpen;
    // How the user finishes in the catalog's own application.
    std::string_view finishNote;
    // What undo does and cannot do.
    std::string_view undoNote;
    // With the photos counted ("3 photos"): the question before a marking,
    // and what a marking did.
    std::string_view question;
    std::string_view marked;
    // What will happen to the planned photos: "marked Rejected in Lightroom
    // Classic".
    std::string_view planned;
    // What the marked photos still are, and what undo gave back: "Rejected",
    // "flags".
    std::string_view stillMarked;
    std::string_view givenBack;
    // The window's line after an undo.
    std::string_view undone;
    // The window's words: its command, the verb of the button, what was done
    // (with the counted photos), and the notice of an untested version (with
    // the version).
    std::string_view command;
    std::string_view verb;
    std::string_view done;
    std::string_view untestedNotice;

    [[nodiscard]] static const CatalogKindTexts& of(CatalogSource::Application application);

    // Filled in with the photos counted, as the program writes them.
    [[nodiscard]] std::string questionText(std::string_view photos) const;
    [[nodiscard]] std::string markedText(std::string_view photos) const;
    [[nodiscard]] std::string doneText(std::string_view photos) const;
    [[nodiscard]] std::string untestedText(std::string_view version) const;

    // What every reader of the kind says: the database is locked, the file is
    // not one of its catalogs, a folder holds none.
    [[nodiscard]] std::string busyText() const;
    [[nodiscard]] std::string notACatalogText() const;
    [[nodiscard]] std::string noCatalogText(std::string_view folder) const;
};

} // namespace brevant
