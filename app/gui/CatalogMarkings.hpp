#pragma once

#include "app/gui/CleanupSettings.hpp"
#include "engine/catalogs/CatalogKinds.hpp"
#include "engine/catalogs/CatalogSource.hpp"

#include <QString>

#include <cstddef>
#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace brevant::gui {

// The catalog a scope means; nothing for folders.
[[nodiscard]] std::optional<CatalogSource::Application> applicationOf(CleanupSettings::Scope scope);
[[nodiscard]] CleanupSettings::Scope scopeOf(CatalogSource::Application application);

// One marking of any catalog, as the markings window lists it.
struct CatalogMarking {
    CatalogMarkingEntry entry;

    [[nodiscard]] CleanupSettings::Scope scope() const;
    [[nodiscard]] Uuid id() const;
    [[nodiscard]] Date date() const;
    [[nodiscard]] std::size_t count() const;
    [[nodiscard]] bool restored() const;
    [[nodiscard]] std::string catalogPath() const;
    [[nodiscard]] std::string backupPath() const;
};

// The catalog kinds over the record folders inside one data folder, so that
// the window and its tests never depend on the process's environment. A
// marking or an undo is refused at once while another run holds the data
// folder's change lock.
class CatalogMarkings {
public:
    explicit CatalogMarkings(const std::string& dataFolder);

    // Marks in the scope's catalog; the refusal's sentence when refused.
    [[nodiscard]] std::expected<CatalogMarkOutcome, std::string>
    mark(CleanupSettings::Scope scope, const CleanupPlan& plan, const CleanupApproval& approval,
         const std::string& catalog, Date now) const;

    // Every catalog's records, newest first.
    [[nodiscard]] std::vector<CatalogMarking> history() const;

    // Undoes a marking; the refusal's sentence when it was refused.
    [[nodiscard]] std::optional<std::string> undo(const CatalogMarking& marking) const;

private:
    std::string dataFolder_;
};

namespace catalog_texts {

// "Lightroom Classic", "Capture One".
[[nodiscard]] QString application(CleanupSettings::Scope scope);
// The File menu's command and the card's window title.
[[nodiscard]] QString command(CleanupSettings::Scope scope);
// "marked Rejected in Lightroom Classic": what will happen to the planned
// photos.
[[nodiscard]] QString planned(CleanupSettings::Scope scope);
// "Marked 3 photos Rejected in Lightroom Classic."
[[nodiscard]] QString marked(CleanupSettings::Scope scope, std::size_t count);
// "Mark Rejected", "Tag Red".
[[nodiscard]] QString verb(CleanupSettings::Scope scope);
// "3 photos marked Rejected", "1 photo tagged Red".
[[nodiscard]] QString done(CleanupSettings::Scope scope, std::size_t count);
// What undo does and cannot do.
[[nodiscard]] QString undoNote(CleanupSettings::Scope scope);
// What an undo did.
[[nodiscard]] QString undone(CleanupSettings::Scope scope);
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
