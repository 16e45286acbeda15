#pragma once

#include "engine/catalogs/CaptureOneCatalog.hpp"
#include "engine/catalogs/CaptureOneMarkRecord.hpp"
#include "engine/catalogs/CaptureOneRefusal.hpp"
#include "engine/catalogs/CatalogRecheck.hpp"
#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupPlan.hpp"

#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Gives the approved duplicates of a Capture One catalog the Red colour tag
// in the catalog's database; the user then deletes them in Capture One.
// Nothing is moved to the Trash from here. The same safety rules hold as
// for Lightroom Classic: only while Capture One is closed, only for a tested
// version, after a backup, in one transaction, with a record for undo.
struct CaptureOneMarker {
    using Refusal = CaptureOneRefusal;
    using IsOpen = std::function<bool(const std::string& catalog)>;

    struct Report {
        Uuid id;
        // Absent when nothing was tagged.
        std::optional<CaptureOneMarkRecord> record;
        std::vector<std::string> marked;
        std::vector<SkippedMark> skipped;
    };

    std::string recordDirectory;
    IsOpen isOpen = [](const std::string& catalog) { return CaptureOneCatalog::isOpen(catalog); };

    [[nodiscard]] static std::string defaultRecordDirectory();

    // Refused in this order, each before anything is changed: an approval
    // of another plan; a planned photo not from a Capture One catalog;
    // Capture One open; a catalog that cannot be read afresh; an untested
    // version. Photos that fail their re-check are skipped. When nothing is
    // left, no backup is taken. Otherwise the package is backed up (the
    // database only) and, in one transaction, the metadata rows of each
    // image's first variant are tagged Red and its modification date set to
    // `now`.
    [[nodiscard]] std::expected<Report, Refusal> mark(const CleanupPlan& plan,
                                                      const CleanupApproval& approval,
                                                      const std::string& catalog, Date now) const;

    // Puts back the earlier tags and dates of each item whose rows all still
    // carry the Red tag; an item the user retagged since is left whole. A
    // record already restored is answered as it is.
    [[nodiscard]] std::expected<CaptureOneMarkRecord, Refusal>
    restore(const CaptureOneMarkRecord& record) const;

    [[nodiscard]] std::vector<CaptureOneMarkRecord> history() const;

    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const CaptureOnePhoto* photo);

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
};

} // namespace brevant
