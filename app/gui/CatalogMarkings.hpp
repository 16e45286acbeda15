#pragma once

#include "app/gui/CleanupSettings.hpp"
#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/CatalogSource.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"
#include "engine/cleanup/ChangeLock.hpp"

#include <QString>

#include <cstddef>
#include <expected>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace brevant::gui {

// One marking of either catalog, as the markings window lists it.
struct CatalogMarking {
    std::variant<LightroomMarkRecord, CaptureOneMarkRecord> record;

    [[nodiscard]] CleanupSettings::Scope scope() const;
    [[nodiscard]] Uuid id() const;
    [[nodiscard]] Date date() const;
    [[nodiscard]] std::size_t count() const;
    [[nodiscard]] bool restored() const;
    [[nodiscard]] std::string catalogPath() const;
    [[nodiscard]] std::string backupPath() const;
};

// The two markers over the record folders inside one data folder, so that
// the window and its tests never depend on the process's environment.
class CatalogMarkings {
public:
    explicit CatalogMarkings(const std::string& dataFolder);

    [[nodiscard]] const LightroomRejecter& rejecter() const { return rejecter_; }

    [[nodiscard]] const CaptureOneMarker& marker() const { return marker_; }

    // Both catalogs' records, newest first.
    [[nodiscard]] std::vector<CatalogMarking> history() const;

    // Undoes a marking; the refusal's sentence when it was refused.
    [[nodiscard]] std::optional<std::string> undo(const CatalogMarking& marking) const;

    // The data folder's change lock, held while a marking or an undo runs;
    // the sentence why not when another run holds it.
    [[nodiscard]] std::expected<ChangeLock, std::string> changeLock() const;

private:
    std::string dataFolder_;
    LightroomRejecter rejecter_;
    CaptureOneMarker marker_;
};

namespace catalog_texts {

// "Lightroom Classic", "Capture One".
[[nodiscard]] QString application(CleanupSettings::Scope scope);
// The File menu's command and the card's window title.
[[nodiscard]] QString command(CleanupSettings::Scope scope);
// "Mark Rejected", "Tag Red".
[[nodiscard]] QString verb(CleanupSettings::Scope scope);
// "3 photos marked Rejected", "1 photo tagged Red".
[[nodiscard]] QString done(CleanupSettings::Scope scope, std::size_t count);
// What undo does and cannot do.
[[nodiscard]] QString undoNote(CleanupSettings::Scope scope);
// How the user finishes in the catalog's own application.
[[nodiscard]] QString finishNote(CleanupSettings::Scope scope);
// Before a marking is prepared: that the catalog's version is one marking
// was not tested with, and why marking will refuse it; "" when it was.
[[nodiscard]] QString untestedNotice(const CatalogSource::Facts& facts);
// "Already Rejected in Lightroom Classic: 2", as the command line counts
// them; "" when there are none.
[[nodiscard]] QString alreadyMarkedLine(const CatalogSource::Facts& facts);
// A date as the user's locale writes it, in local time.
[[nodiscard]] QString dateText(Date date);

} // namespace catalog_texts

} // namespace brevant::gui
