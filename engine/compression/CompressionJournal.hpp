#pragma once

#include "engine/cleanup/Journal.hpp"
#include "engine/compression/CompressionPlan.hpp"
#include "engine/compression/CompressionReport.hpp"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

struct PutBackRequest;

// What makes a journal a compression's: its plan is a CompressionPlan whose
// items are the files given copies (by path), its report a
// CompressionReport. Besides the moves of originals it records, per item, a
// writing line before the copy's temporary file is made and a copy line
// before the checked copy takes its name.
struct CompressionJournalKind {
    using Plan = CompressionPlan;
    using Item = PlannedCompression;
    using Report = CompressionReport;

    static constexpr std::string_view kFilePrefix = "compression-";
    static constexpr std::string_view kRecord = "compression";
    static constexpr std::string_view kCutBeforePlan =
        "This compression stopped while its plan was being written, before any file could "
        "change: it changed nothing.";

    [[nodiscard]] static Uuid& planID(Plan& plan) { return plan.id; }

    [[nodiscard]] static const Uuid& planID(const Plan& plan) { return plan.id; }

    [[nodiscard]] static const std::vector<Item>& items(const Plan& plan) { return plan.items; }

    [[nodiscard]] static const std::string& itemID(const Item& item) { return item.path; }

    [[nodiscard]] static FileIdentity identity(const Item& item) { return item.snapshot.identity; }

    [[nodiscard]] static Plan planFromLines(const std::vector<std::string>& items,
                                            const JournalState& state);

    // One item report per planned file, in plan order.
    [[nodiscard]] static Report reportOf(const JournalParsed<CompressionJournalKind>& parsed);

    // An original that never began to move: its unfinished copy, ours by
    // name and by the journal, is removed; a checked copy that already took
    // its name stays beside it.
    [[nodiscard]] static SettledItem unmoved(const JournalParsed<CompressionJournalKind>& parsed,
                                             const Item& item);

    // The copies of the originals put back go to the Trash the same way the
    // originals went, journalled under the copy's own path; a copy changed
    // or gone since it was written stays as it is. Answers, per original, a
    // sentence on its copy.
    [[nodiscard]] static std::map<std::string, std::string>
    afterPutBack(Journal<CompressionJournalKind>& journal,
                 const JournalParsed<CompressionJournalKind>& parsed,
                 const std::vector<std::string>& restored, const PutBackRequest& request);
};

// The durable record of one compression run: one file per plan in the data
// folder's "Compressions", named "compression-" + the plan's id.
using CompressionJournal = Journal<CompressionJournalKind>;

extern template class Journal<CompressionJournalKind>;

} // namespace brevant
