#include "CleanupJournal.hpp"

#include "engine/cleanup/JournalTexts.hpp"

namespace brevant {

template class Journal<CleanupJournalKind>;

CleanupPlan CleanupJournalKind::planFromLines(const std::vector<std::string>& items,
                                              const JournalState& state) {
    CleanupPlan plan;
    for (const auto& item : items) {
        PlannedRemoval removal;
        removal.path = item;
        removal.snapshot.identity = state.trashedIdentity(item, {});
        plan.removals.push_back(std::move(removal));
    }
    return plan;
}

CleanupReport CleanupJournalKind::reportOf(const JournalParsed<CleanupJournalKind>& parsed) {
    CleanupReport report;
    report.items.reserve(parsed.plan.removals.size());
    for (const auto& removal : parsed.plan.removals) {
        ItemReport item;
        item.removal = removal;
        if (auto notes = parsed.notes.find(removal.path); notes != parsed.notes.end()) {
            item.notes = notes->second;
        }
        auto recorded = parsed.outcomes.find(removal.path);
        RecordedOutcome outcome =
            recorded != parsed.outcomes.end()
                ? recorded->second
                : assumedOutcome(parsed, removal.path, journal_texts::kNotAttempted);
        item.outcome = std::move(outcome.outcome);
        item.at = outcome.at;
        report.items.push_back(std::move(item));
    }
    return report;
}

SettledItem CleanupJournalKind::unmoved(const JournalParsed<CleanupJournalKind>& parsed,
                                        const PlannedRemoval& /*item*/) {
    return {.outcome = ItemOutcome::skipped(std::string(
                parsed.finished ? journal_texts::kNeverMoved : journal_texts::kNotAttempted))};
}

std::map<std::string, std::string> CleanupJournalKind::afterPutBack(
    Journal<CleanupJournalKind>& /*journal*/, const JournalParsed<CleanupJournalKind>& /*parsed*/,
    const std::vector<std::string>& /*restored*/, const PutBackRequest& /*request*/) {
    return {};
}

} // namespace brevant
