#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/support/IsoDate.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

std::string seed(std::string_view name) {
    return std::string(BREVANT_SOURCE_DIR) + "/tests/fuzz/corpus/CleanupJournalFuzz/" +
           std::string(name);
}

// The fuzzer's seeds were written by another JSON encoder; they must read as
// their entries say.
TEST(JournalSeeds, AJournalWithEveryKindOfEntryReadsAsWritten) {
    auto report = CleanupJournal::report(seed("every-entry.jsonl"));
    ASSERT_TRUE(report);
    const std::string folder = "/home/ann/Pictures/";
    ASSERT_EQ(report->items.size(), 6U);
    EXPECT_EQ(report->items[0].outcome, ItemOutcome::restored(folder + "a (restored).jpg"));
    EXPECT_EQ(report->items[0].notes.size(), 1U);
    EXPECT_EQ(report->items[1].outcome.kind, ItemOutcome::Kind::skipped);
    EXPECT_EQ(report->items[1].removal.volumeName, "Card");
    // Stored as a private-use character, read as the byte it stands for.
    EXPECT_EQ(report->items[2].removal.path, folder + "c \x80.jpg");
    EXPECT_EQ(report->items[2].outcome.kind, ItemOutcome::Kind::failed);
    EXPECT_EQ(report->items[3].outcome, ItemOutcome::movedToTrash(std::nullopt));
    EXPECT_EQ(report->items[3].removal.catalog, (CatalogItem{CatalogApplication::lightroom, 42}));
    EXPECT_EQ(report->items[3].removal.matchKind, std::nullopt);
    EXPECT_EQ(report->items[4].outcome.kind, ItemOutcome::Kind::unknown);
    EXPECT_EQ(report->items[5].outcome,
              ItemOutcome::skipped("Not attempted: the cleanup stopped before reaching it."));
    EXPECT_EQ(report->finished, iso_date::parse("2026-11-14T21:49:50Z"));
    EXPECT_EQ(report->freedBytes(), 2048);
}

TEST(JournalSeeds, TornAndPlanlessJournalsReadAsTheirWholeLines) {
    auto torn = CleanupJournal::parse(seed("torn-last-line.jsonl"));
    ASSERT_TRUE(torn);
    EXPECT_EQ(torn->intents.size(), 3U);
    EXPECT_EQ(torn->outcomes.size(), 3U);
    auto appended = CleanupJournal::parse(seed("torn-then-appended.jsonl"));
    ASSERT_TRUE(appended);
    EXPECT_EQ(appended->outcomes, torn->outcomes);
    EXPECT_EQ(appended->notes.at("/home/ann/Pictures/d.jpg"),
              std::vector<std::string>{"after the crash"});
    // Without its plan a journal still lists the pictures its lines name.
    auto planless = CleanupJournal::parse(seed("no-plan.jsonl"));
    ASSERT_TRUE(planless);
    EXPECT_TRUE(planless->planDamaged);
    ASSERT_EQ(planless->plan.removals.size(), 2U);
    EXPECT_EQ(planless->plan.removals[1].path, "/home/ann/Pictures/b.jpg");
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
