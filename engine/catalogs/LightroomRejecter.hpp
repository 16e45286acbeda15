#pragma once

#include "engine/catalogs/CatalogRecheck.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/catalogs/LightroomMarkRecord.hpp"
#include "engine/catalogs/LightroomRefusal.hpp"
#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupPlan.hpp"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Gives the approved duplicates of a Lightroom Classic catalog Lightroom's
// Rejected flag, as if the user had pressed X in Lightroom; the user then
// deletes them there. Nothing is moved to the Trash from here. The catalog
// is changed only while Lightroom Classic is closed, only for versions that
// marking was tested with, after a backup and in one transaction, and every
// marking is written down so that it can be undone.
struct LightroomRejecter {
    using Refusal = LightroomRefusal;
    using IsOpen = std::function<bool(const std::string& catalog)>;

    struct Report {
        Uuid id;
        // Absent when nothing was marked.
        std::optional<LightroomMarkRecord> record;
        std::vector<std::string> marked;
        std::vector<SkippedMark> skipped;
        // Marking frees nothing until the user deletes in Lightroom.
        std::int64_t bytesFreed = 0;
    };

    // Where the records are kept; the application hands it in.
    std::string recordDirectory;
    IsOpen isOpen = [](const std::string& catalog) { return LightroomCatalog::isOpen(catalog); };

    // The application's record folder inside Brevant's data folder.
    [[nodiscard]] static std::string defaultRecordDirectory();

    // Refused in this order, each before anything is changed: an approval
    // of another plan; a planned photo that is not from a Lightroom catalog;
    // Lightroom Classic open; a catalog that cannot be read afresh; a
    // version marking was not tested with. Each planned photo is then
    // checked again against the fresh catalog and the disk, and skipped with
    // the first reason that applies. When nothing is left, no backup is
    // taken and the catalog is not opened for writing. Otherwise the catalog
    // is backed up, every photo flagged Rejected in one transaction (rolled
    // back whole unless each update changes exactly one row), and the record
    // saved.
    [[nodiscard]] std::expected<Report, Refusal> mark(const CleanupPlan& plan,
                                                      const CleanupApproval& approval,
                                                      const std::string& catalog, Date now) const;

    // Gives each photo that is still Rejected its earlier flag back; a photo
    // the user has flagged otherwise since keeps the user's flag. The record
    // is saved again with `restored` set. A record already restored is
    // answered as it is, without touching the catalog.
    [[nodiscard]] std::expected<LightroomMarkRecord, Refusal>
    restore(const LightroomMarkRecord& record) const;

    // The records in the folder, newest first; files that do not decode as
    // a record are left out.
    [[nodiscard]] std::vector<LightroomMarkRecord> history() const;

    // The re-check of one planned photo against the fresh catalog; nothing
    // when it may be marked.
    [[nodiscard]] static std::optional<std::string_view> recheck(const PlannedRemoval& removal,
                                                                 const LightroomPhoto* photo);

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
};

} // namespace brevant
