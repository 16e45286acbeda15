#include "LightroomRejecter.hpp"

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/CatalogTransaction.hpp"
#include "engine/catalogs/MarkRecordFiles.hpp"
#include "engine/platform/DataFolder.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <ranges>

namespace brevant {

namespace {

using Item = LightroomMarkRecord::Item;

std::optional<LightroomRefusal> refusalBeforeReading(const CleanupPlan& plan,
                                                     const CleanupApproval& approval) {
    if (approval.planID != plan.id) {
        return LightroomRefusal::approvalDoesNotMatch();
    }
    if (!std::ranges::all_of(plan.removals, [](const PlannedRemoval& removal) {
            return removal.lightroomImageID.has_value();
        })) {
        return LightroomRefusal::notLightroomPhotos();
    }
    return std::nullopt;
}

std::expected<void, SQLiteWriter::Failure> reject(const SQLiteWriter& writer,
                                                  const std::vector<Item>& items) {
    for (const auto& item : items) {
        auto updated = CatalogTransaction::updateOne(
            writer,
            fmt::format("UPDATE Adobe_images SET pick = -1.0 WHERE id_local = {} AND "
                        "masterImage IS NULL",
                        item.imageID),
            std::string(LightroomRejecter::kNotWhereScanned));
        if (!updated) {
            return updated;
        }
    }
    return {};
}

// Only photos still Rejected get their flag back: any other flag was set by
// the user since, and a photo deleted in Lightroom matches no row. Lightroom
// keeps flags as real numbers, so the flag goes back as one ("1.0", not "1"),
// stored exactly as it was before the marking.
std::expected<void, SQLiteWriter::Failure> unreject(const SQLiteWriter& writer,
                                                    const std::vector<Item>& items) {
    for (const auto& item : items) {
        auto updated = writer.run(
            fmt::format("UPDATE Adobe_images SET pick = {}.0 WHERE id_local = {} AND pick < 0",
                        item.previousPick, item.imageID));
        if (!updated) {
            return std::unexpected(updated.error());
        }
    }
    return {};
}

std::expected<void, LightroomRefusal> save(const std::string& directory,
                                           const LightroomMarkRecord& record) {
    auto saved = MarkRecordFiles::save(directory, record.id, json::Json(record));
    if (!saved) {
        return std::unexpected(LightroomRefusal::recordNotSaved(saved.error()));
    }
    return {};
}

} // namespace

std::string LightroomRejecter::defaultRecordDirectory() {
    return platform::DataFolder::current().markings() + "/Lightroom Classic";
}

std::optional<std::string_view> LightroomRejecter::recheck(const PlannedRemoval& removal,
                                                           const LightroomPhoto* photo) {
    if (photo == nullptr || photo->path != removal.path) {
        return CatalogRecheck::kNotInCatalog;
    }
    if (!CatalogRecheck::isUnchanged(removal.path, removal.snapshot)) {
        return CatalogRecheck::kChanged;
    }
    if (photo->ref.pick < 0) {
        return kAlreadyRejected;
    }
    if (photo->ref.virtualCopies >= 1) {
        return kHasVirtualCopy;
    }
    if (!CatalogRecheck::hasKeeperLeft(removal)) {
        return CatalogRecheck::kNoKeeperLeft;
    }
    return std::nullopt;
}

std::expected<LightroomRejecter::Report, LightroomRejecter::Refusal>
LightroomRejecter::mark(const CleanupPlan& plan, const CleanupApproval& approval,
                        const std::string& catalog, Date now) const {
    if (auto refused = refusalBeforeReading(plan, approval)) {
        return std::unexpected(std::move(*refused));
    }
    if (isOpen(catalog)) {
        return std::unexpected(Refusal::lightroomOpen());
    }
    auto fresh = LightroomCatalog::read(catalog);
    if (!fresh) {
        return std::unexpected(Refusal::writeFailed(fresh.error().text()));
    }
    if (!fresh->isTestedVersion()) {
        return std::unexpected(Refusal::untestedVersion(fresh->schemaVersion));
    }

    std::map<std::int64_t, const LightroomPhoto*> byID;
    for (const auto& photo : fresh->photos) {
        byID.emplace(photo.ref.imageID, &photo);
    }
    Report report{.id = Uuid::make()};
    std::vector<Item> items;
    for (const auto& removal : plan.removals) {
        auto found = removal.lightroomImageID ? byID.find(*removal.lightroomImageID) : byID.end();
        const LightroomPhoto* photo = found != byID.end() ? found->second : nullptr;
        if (auto reason = recheck(removal, photo)) {
            report.skipped.push_back(CatalogRecheck::skipped(removal, *reason));
            continue;
        }
        items.push_back({photo->ref.imageID, photo->path, photo->ref.pick});
    }
    if (items.empty()) {
        return report;
    }

    auto backup = CatalogBackup::backUpLightroom(catalog, now);
    if (!backup) {
        return std::unexpected(Refusal::backupFailed(backup.error().description));
    }
    auto changed = CatalogTransaction::run(
        catalog, [&items](const SQLiteWriter& writer) { return reject(writer, items); });
    if (!changed) {
        return std::unexpected(Refusal::writeFailed(changed.error().description));
    }

    LightroomMarkRecord record{.id = Uuid::make(),
                               .planID = plan.id,
                               .catalogPath = catalog,
                               .backupPath = *backup,
                               .date = Date::fromUnixSeconds(std::floor(now.unixSeconds())),
                               .marked = std::move(items)};
    if (auto saved = save(recordDirectory, record); !saved) {
        // Without a record there is no undo from here: the backup is the
        // way back, so it is named.
        return std::unexpected(Refusal::recordNotSaved(
            fmt::format("{} (the backup from before is {})", saved.error().detail, *backup)));
    }
    for (const auto& item : record.marked) {
        report.marked.push_back(item.path);
    }
    report.record = std::move(record);
    return report;
}

std::expected<LightroomMarkRecord, LightroomRejecter::Refusal>
LightroomRejecter::restore(const LightroomMarkRecord& record) const {
    if (record.restored) {
        return record;
    }
    if (isOpen(record.catalogPath)) {
        return std::unexpected(Refusal::lightroomOpen());
    }
    auto changed = CatalogTransaction::run(record.catalogPath, [&record](const SQLiteWriter& w) {
        return unreject(w, record.marked);
    });
    if (!changed) {
        return std::unexpected(Refusal::writeFailed(changed.error().description));
    }
    LightroomMarkRecord restored = record;
    restored.restored = true;
    if (auto saved = save(recordDirectory, restored); !saved) {
        return std::unexpected(saved.error());
    }
    return restored;
}

std::vector<LightroomMarkRecord> LightroomRejecter::history() const {
    std::vector<LightroomMarkRecord> records;
    for (const auto& document : MarkRecordFiles::documents(recordDirectory)) {
        if (auto record = LightroomMarkRecord::decode(document)) {
            records.push_back(std::move(*record));
        }
    }
    std::ranges::stable_sort(records, std::ranges::greater(), &LightroomMarkRecord::date);
    return records;
}

} // namespace brevant
