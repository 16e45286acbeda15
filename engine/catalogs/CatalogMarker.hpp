#pragma once

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/CatalogRecheck.hpp"
#include "engine/catalogs/CatalogRefusal.hpp"
#include "engine/catalogs/CatalogTransaction.hpp"
#include "engine/catalogs/MarkRecordFiles.hpp"
#include "engine/catalogs/MarkTexts.hpp"
#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/support/Json.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <expected>
#include <fmt/format.h>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// The marking of a catalog's approved duplicates, written once for every
// kind of catalog: nothing is moved to the Trash from here, the user deletes
// them in the catalog's own application. The catalog is changed only while
// its application is closed, only for versions marking was tested with,
// after a backup and in one transaction, and every marking is written down
// so that it can be undone. `Hooks` supplies what differs:
//
//   using Catalog, Photo, Chosen, Record (with Record::Item);
//   kApplication, kRecordFolder;
//   photoID(photo), isOpen(catalog), read(catalog),
//   recheck(removal, photo*), choose(photo), backUp(catalog, fresh, now),
//   database(catalog, fresh), change(writer, chosen, now) -> Item,
//   undoDatabase(catalogPath), undo(writer, item).
template <class Hooks> struct CatalogMarker {
    using Marking = Hooks;
    using Refusal = CatalogRefusal;
    using Record = typename Marking::Record;
    using Item = typename Record::Item;
    using Failure = SQLiteWriter::Failure;
    using IsOpen = std::function<bool(const std::string& catalog)>;

    struct Report {
        Uuid id;
        // Absent when nothing was marked.
        std::optional<Record> record;
        std::vector<std::string> marked;
        std::vector<SkippedMark> skipped;
        // Marking frees nothing until the user deletes in the application.
        std::int64_t bytesFreed = 0;
    };

    // Where the records are kept; the application hands it in.
    std::string recordDirectory;
    IsOpen isOpen = [](const std::string& catalog) { return Marking::isOpen(catalog); };

    // Refused in this order, each before anything is changed: an approval
    // of another plan; a planned photo that is not from this kind of
    // catalog; the application open; a catalog that cannot be read afresh; a
    // version marking was not tested with. Each planned photo is then
    // checked again against the fresh catalog and the disk, and skipped with
    // the first reason that applies. When nothing is left, no backup is
    // taken and the catalog is not opened for writing. Otherwise the catalog
    // is backed up, every photo marked in one transaction, and the record
    // saved.
    [[nodiscard]] std::expected<Report, Refusal> mark(const CleanupPlan& plan,
                                                      const CleanupApproval& approval,
                                                      const std::string& catalog, Date now) const {
        if (approval.planID != plan.id) {
            return std::unexpected(Refusal::approvalDoesNotMatch(Marking::kApplication));
        }
        if (!std::ranges::all_of(plan.removals, [](const PlannedRemoval& removal) {
                return catalogID(removal).has_value();
            })) {
            return std::unexpected(Refusal::notCatalogPhotos(Marking::kApplication));
        }
        if (isOpen(catalog)) {
            return std::unexpected(Refusal::applicationOpen(Marking::kApplication));
        }
        auto fresh = Marking::read(catalog);
        if (!fresh) {
            return std::unexpected(
                Refusal::writeFailed(Marking::kApplication, fresh.error().text()));
        }
        if (!fresh->isTestedVersion()) {
            return std::unexpected(
                Refusal::untestedVersion(Marking::kApplication, fresh->schemaVersion));
        }
        Report report{.id = Uuid::make()};
        auto chosen = rechecked(plan, *fresh, report.skipped);
        if (chosen.empty()) {
            return report;
        }
        auto backup = Marking::backUp(catalog, *fresh, now);
        if (!backup) {
            return std::unexpected(
                Refusal::backupFailed(Marking::kApplication, backup.error().description));
        }
        std::vector<Item> items;
        auto changed = CatalogTransaction::run(
            Marking::database(catalog, *fresh), [&](const SQLiteWriter& writer) {
                for (const auto& one : chosen) {
                    auto item = Marking::change(writer, one, now);
                    if (!item) {
                        return std::expected<void, Failure>(std::unexpected(item.error()));
                    }
                    items.push_back(std::move(*item));
                }
                return std::expected<void, Failure>();
            });
        if (!changed) {
            return std::unexpected(
                Refusal::writeFailed(Marking::kApplication, changed.error().description));
        }
        Record record{.id = Uuid::make(),
                      .planID = plan.id,
                      .catalogPath = catalog,
                      .backupPath = *backup,
                      .date = Date::fromUnixSeconds(std::floor(now.unixSeconds())),
                      .marked = std::move(items)};
        if (auto saved = save(record); !saved) {
            // Without a record there is no undo from here: the backup is the
            // way back, so it is named.
            return std::unexpected(Refusal::recordNotSaved(
                Marking::kApplication,
                fmt::format("{} (the backup from before is {})", saved.error().detail, *backup)));
        }
        for (const auto& item : record.marked) {
            report.marked.push_back(item.path);
        }
        report.record = std::move(record);
        return report;
    }

    // Gives each photo that is still as the marking left it its earlier
    // state back; a photo the user has changed since keeps the user's
    // change. The record is saved again with `restored` set. A record
    // already restored is answered as it is, without touching the catalog.
    [[nodiscard]] std::expected<Record, Refusal> restore(const Record& record) const {
        if (record.restored) {
            return record;
        }
        if (isOpen(record.catalogPath)) {
            return std::unexpected(Refusal::applicationOpen(Marking::kApplication));
        }
        auto database = Marking::undoDatabase(record.catalogPath);
        if (!database) {
            return std::unexpected(
                Refusal::writeFailed(Marking::kApplication, std::string(mark_texts::kCatalogGone)));
        }
        auto changed = CatalogTransaction::run(*database, [&record](const SQLiteWriter& writer) {
            for (const auto& item : record.marked) {
                if (auto done = Marking::undo(writer, item); !done) {
                    return done;
                }
            }
            return std::expected<void, Failure>();
        });
        if (!changed) {
            return std::unexpected(
                Refusal::writeFailed(Marking::kApplication, changed.error().description));
        }
        Record restored = record;
        restored.restored = true;
        if (auto saved = save(restored); !saved) {
            return std::unexpected(saved.error());
        }
        return restored;
    }

    // The records in the folder, newest first; files that do not decode as
    // a record are left out.
    [[nodiscard]] std::vector<Record> history() const {
        std::vector<Record> records;
        for (const auto& document : MarkRecordFiles::documents(recordDirectory)) {
            if (auto record = Record::decode(document)) {
                records.push_back(std::move(*record));
            }
        }
        std::ranges::stable_sort(records, std::ranges::greater(), &Record::date);
        return records;
    }

private:
    // The planned photo's id in this kind of catalog.
    [[nodiscard]] static std::optional<std::int64_t> catalogID(const PlannedRemoval& removal) {
        if (!removal.catalog || removal.catalog->application != Marking::kApplication) {
            return std::nullopt;
        }
        return removal.catalog->imageID;
    }

    std::vector<typename Marking::Chosen> rechecked(const CleanupPlan& plan,
                                                    const typename Marking::Catalog& fresh,
                                                    std::vector<SkippedMark>& skipped) const {
        std::map<std::int64_t, const typename Marking::Photo*> byID;
        for (const auto& photo : fresh.photos) {
            byID.emplace(Marking::photoID(photo), &photo);
        }
        std::vector<typename Marking::Chosen> chosen;
        for (const auto& removal : plan.removals) {
            auto id = catalogID(removal);
            auto found = id ? byID.find(*id) : byID.end();
            const typename Marking::Photo* photo = found != byID.end() ? found->second : nullptr;
            if (auto reason = Marking::recheck(removal, photo)) {
                skipped.push_back(CatalogRecheck::skipped(removal, *reason));
                continue;
            }
            chosen.push_back(Marking::choose(*photo));
        }
        return chosen;
    }

    std::expected<void, Refusal> save(const Record& record) const {
        auto saved = MarkRecordFiles::save(recordDirectory, record.id, json::Json(record));
        if (!saved) {
            return std::unexpected(Refusal::recordNotSaved(Marking::kApplication, saved.error()));
        }
        return {};
    }
};

} // namespace brevant
