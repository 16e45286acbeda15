#pragma once

#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/CleanupReport.hpp"
#include "engine/cleanup/Journal.hpp"
#include "engine/cleanup/JournalTexts.hpp"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

struct PutBackRequest;

// What makes a journal a cleanup's: its plan is a CleanupPlan whose items
// are the planned removals (by path), and its report a CleanupReport.
struct CleanupJournalKind {
    using Plan = CleanupPlan;
    using Item = PlannedRemoval;
    using Report = CleanupReport;

    static constexpr std::string_view kFilePrefix = "cleanup-";
    // The word for the record in sentences.
    static constexpr std::string_view kRecord = "cleanup";
    // The damage said of a journal cut short while its plan was written.
    static constexpr std::string_view kCutBeforePlan = journal_texts::kCutBeforePlan;

    [[nodiscard]] static Uuid& planID(Plan& plan) { return plan.id; }

    [[nodiscard]] static const Uuid& planID(const Plan& plan) { return plan.id; }

    [[nodiscard]] static const std::vector<Item>& items(const Plan& plan) { return plan.removals; }

    [[nodiscard]] static const std::string& itemID(const Item& item) { return item.path; }

    [[nodiscard]] static FileIdentity identity(const Item& item) { return item.snapshot.identity; }

    // Without a readable plan line the items are those the other lines name;
    // a moved one keeps the identity its outcome recorded, so it can be put
    // back.
    [[nodiscard]] static Plan planFromLines(const std::vector<std::string>& items,
                                            const JournalState& state);

    // One item report per planned removal, in plan order.
    [[nodiscard]] static Report reportOf(const JournalParsed<CleanupJournalKind>& parsed);

    // What reconciliation records for a removal that has no intent: it never
    // began to move.
    [[nodiscard]] static SettledItem unmoved(const JournalParsed<CleanupJournalKind>& parsed,
                                             const Item& item);

    // Nothing goes with a picture put back.
    [[nodiscard]] static std::map<std::string, std::string>
    afterPutBack(Journal<CleanupJournalKind>& journal,
                 const JournalParsed<CleanupJournalKind>& parsed,
                 const std::vector<std::string>& restored, const PutBackRequest& request);
};

// The durable record of one folder cleanup (see Journal): one file per plan
// in the data folder's "Cleanups", named "cleanup-" + the plan's id.
using CleanupJournal = Journal<CleanupJournalKind>;

extern template class Journal<CleanupJournalKind>;

} // namespace brevant
