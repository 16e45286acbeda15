#pragma once

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogRecheck.hpp"
#include "engine/catalogs/CatalogRefusal.hpp"
#include "engine/catalogs/CatalogSource.hpp"
#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/Json.hpp"
#include "engine/support/Uuid.hpp"

#include <cstddef>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace brevant {

// One marking of any kind of catalog, as history lists it and undo takes
// it; `record` is the kind's own record as it is saved.
struct CatalogMarkingEntry {
    CatalogSource::Application application = CatalogSource::Application::lightroom;
    Uuid id;
    Date date;
    std::size_t count = 0;
    bool restored = false;
    std::string catalogPath;
    std::string backupPath;
    json::Json record;

    friend bool operator==(const CatalogMarkingEntry&, const CatalogMarkingEntry&) = default;
};

// What one marking did, alike for every kind.
struct CatalogMarkOutcome {
    std::vector<std::string> marked;
    std::vector<SkippedMark> skipped;
    // Absent when nothing was marked.
    std::optional<CatalogMarkingEntry> record;
};

// A kind of catalog as the programs see it: its sentences, and its marking,
// history and undo, whatever the kind's records hold.
class CatalogKind {
public:
    using IsOpen = std::function<bool(const std::string& catalog)>;

    CatalogKind() = default;
    CatalogKind(const CatalogKind&) = delete;
    CatalogKind& operator=(const CatalogKind&) = delete;
    CatalogKind(CatalogKind&&) = delete;
    CatalogKind& operator=(CatalogKind&&) = delete;
    virtual ~CatalogKind() = default;

    [[nodiscard]] virtual CatalogSource::Application application() const = 0;

    [[nodiscard]] const CatalogKindTexts& texts() const {
        return CatalogKindTexts::of(application());
    }

    [[nodiscard]] virtual std::expected<CatalogMarkOutcome, CatalogRefusal>
    mark(const CleanupPlan& plan, const CleanupApproval& approval, const std::string& catalog,
         Date now) const = 0;

    // Newest first.
    [[nodiscard]] virtual std::vector<CatalogMarkingEntry> history() const = 0;

    // The marking as it stands after the undo.
    [[nodiscard]] virtual std::expected<CatalogMarkingEntry, CatalogRefusal>
    restore(const CatalogMarkingEntry& marking) const = 0;
};

// A kind made of its marker: the marker's records seen as entries.
template <class Marker> class CatalogKindOf final : public CatalogKind {
public:
    using Record = typename Marker::Record;

    CatalogKindOf(std::string recordDirectory, IsOpen isOpen) {
        marker_.recordDirectory = std::move(recordDirectory);
        if (isOpen) {
            marker_.isOpen = std::move(isOpen);
        }
    }

    [[nodiscard]] CatalogSource::Application application() const override {
        return Marker::Marking::kApplication;
    }

    [[nodiscard]] std::expected<CatalogMarkOutcome, CatalogRefusal>
    mark(const CleanupPlan& plan, const CleanupApproval& approval, const std::string& catalog,
         Date now) const override {
        auto report = marker_.mark(plan, approval, catalog, now);
        if (!report) {
            return std::unexpected(report.error());
        }
        CatalogMarkOutcome outcome{.marked = report->marked, .skipped = report->skipped};
        if (report->record) {
            outcome.record = entry(*report->record);
        }
        return outcome;
    }

    [[nodiscard]] std::vector<CatalogMarkingEntry> history() const override {
        std::vector<CatalogMarkingEntry> entries;
        for (const auto& record : marker_.history()) {
            entries.push_back(entry(record));
        }
        return entries;
    }

    [[nodiscard]] std::expected<CatalogMarkingEntry, CatalogRefusal>
    restore(const CatalogMarkingEntry& marking) const override {
        auto record = Record::decode(marking.record.dump());
        if (!record) {
            return std::unexpected(CatalogRefusal::writeFailed(application(), record.error()));
        }
        auto restored = marker_.restore(*record);
        if (!restored) {
            return std::unexpected(restored.error());
        }
        return entry(*restored);
    }

private:
    [[nodiscard]] CatalogMarkingEntry entry(const Record& record) const {
        return {.application = application(),
                .id = record.id,
                .date = record.date,
                .count = record.marked.size(),
                .restored = record.restored,
                .catalogPath = record.catalogPath,
                .backupPath = record.backupPath,
                .record = json::Json(record)};
    }

    Marker marker_;
};

} // namespace brevant
