#include "tests/cleanup/CleanupFixtures.hpp"

#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/CleanupReport.hpp"
#include "engine/cleanup/ItemOutcome.hpp"
#include "engine/cleanup/JournalTexts.hpp"
#include "engine/support/Json.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

using testing::fixedDate;
using testing::fixedPlanID;

using testing::paperSnapshot;
using testing::paperSnapshotText;

PlannedRemoval fullRemoval() {
    PlannedRemoval removal;
    removal.path = "/photos/b.jpg";
    removal.root = "/photos";
    removal.snapshot = paperSnapshot(2, 10);
    removal.sha256 = "ab12";
    removal.keepers = {{"/photos/a.jpg", paperSnapshot(1, 10)}};
    removal.isCloudSynced = true;
    removal.volumeName = "Card";
    removal.isExternalVolume = true;
    removal.matchKind = MatchKind::liveMovie;
    removal.libraryFilename = "IMG_1.HEIC";
    removal.catalog = CatalogItem{CatalogApplication::captureOne, -3};
    return removal;
}

TEST(CleanupRecords, PlannedRemovalUsesItsFieldNamesAndLeavesAbsentOnesOut) {
    PlannedRemoval removal = fullRemoval();
    json::Json full = removal;
    EXPECT_EQ(full.dump(),
              R"({"path":"/photos/b.jpg","root":"/photos","snapshot":)" + paperSnapshotText(2, 10) +
                  R"(,"sha256":"ab12","keepers":[{"path":"/photos/a.jpg","snapshot":)" +
                  paperSnapshotText(1, 10) +
                  R"(}],"isCloudSynced":true,"volumeName":"Card","isExternalVolume":true,)"
                  R"("matchKind":"liveMovie","libraryFilename":"IMG_1.HEIC",)"
                  R"("captureOneImageID":-3})");
    EXPECT_EQ(full.get<PlannedRemoval>(), removal);

    PlannedRemoval bare;
    bare.path = "/p/x.jpg";
    bare.root = "/p";
    bare.snapshot = paperSnapshot(3, 4);
    json::Json lean = bare;
    EXPECT_EQ(lean.dump(), R"({"path":"/p/x.jpg","root":"/p","snapshot":)" +
                               paperSnapshotText(3, 4) +
                               R"(,"sha256":"","keepers":[],"isCloudSynced":false,)"
                               R"("isExternalVolume":false})");
    EXPECT_EQ(lean.get<PlannedRemoval>(), bare);
}

TEST(CleanupRecords, PlanRoundTripsWithItsIdAsTextAndItsDateInIso8601) {
    CleanupPlan plan;
    plan.id = fixedPlanID();
    plan.created = fixedDate();
    plan.roots = {"/photos", "/Volumes/Card \xff"};
    plan.removals = {fullRemoval()};
    std::string text = plan.encoded();
    EXPECT_TRUE(text.starts_with(R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9",)"
                                 R"("created":"2026-11-14T21:49:44Z","roots":["/photos",)"))
        << text;
    EXPECT_EQ(text.find('\n'), std::string::npos);
    // A name that is not UTF-8 survives.
    EXPECT_EQ(CleanupPlan::decode(text), plan);

    auto broken = CleanupPlan::decode(R"({"id":"nope","created":"2026-11-14T21:49:44Z",)"
                                      R"("roots":[],"removals":[]})");
    ASSERT_FALSE(broken);
    EXPECT_TRUE(broken.error().starts_with(journal_texts::kPlanUnreadable)) << broken.error();
    EXPECT_FALSE(CleanupPlan::decode(R"({"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9",)"
                                     R"("created":1,"roots":[],"removals":[]})"));
}

TEST(CleanupRecords, PlansWithNewIdsDifferAndAnApprovalNamesOnlyItsOwn) {
    CleanupPlan first{Uuid::make(), fixedDate(), {"/photos"}, {fullRemoval()}};
    CleanupPlan second{Uuid::make(), fixedDate(), {"/photos"}, {fullRemoval()}};
    EXPECT_NE(first.id, second.id);
    EXPECT_NE(first, second);

    CleanupApproval approval{first.id, fixedDate(3)};
    EXPECT_EQ(approval.planID, first.id);
    EXPECT_NE(approval.planID, second.id);
    EXPECT_EQ(approval.encoded(),
              R"({"planID":")" + first.id.text() + R"(","approvedAt":"2026-11-14T21:49:47Z"})");
    EXPECT_EQ(CleanupApproval::decode(approval.encoded()), approval);
    auto broken = CleanupApproval::decode(R"({"planID":")" + first.id.text() + R"("})");
    ASSERT_FALSE(broken);
    EXPECT_TRUE(broken.error().starts_with(journal_texts::kApprovalUnreadable)) << broken.error();
}

TEST(CleanupRecords, OutcomesAreOneKeyObjects) {
    auto coded = [](const ItemOutcome& outcome) { return json::Json(outcome).dump(); };
    EXPECT_EQ(coded(ItemOutcome::movedToTrash("/t/files/b.jpg")),
              R"({"movedToTrash":{"trashPath":"/t/files/b.jpg"}})");
    EXPECT_EQ(coded(ItemOutcome::movedToTrash(std::nullopt)), R"({"movedToTrash":{}})");
    EXPECT_EQ(coded(ItemOutcome::skipped("Why.")), R"({"skipped":{"_0":"Why."}})");
    EXPECT_EQ(coded(ItemOutcome::failed("No.")), R"({"failed":{"_0":"No."}})");
    EXPECT_EQ(coded(ItemOutcome::unknown("Hm.")), R"({"unknown":{"_0":"Hm."}})");
    EXPECT_EQ(coded(ItemOutcome::restored("/p/b.jpg")), R"({"restored":{"_0":"/p/b.jpg"}})");
    for (const auto& outcome :
         {ItemOutcome::movedToTrash("/t/\x80.jpg"), ItemOutcome::movedToTrash(std::nullopt),
          ItemOutcome::skipped("a"), ItemOutcome::failed("b"), ItemOutcome::unknown("c"),
          ItemOutcome::restored("d")}) {
        EXPECT_EQ(json::Json(outcome).get<ItemOutcome>(), outcome);
    }
    for (std::string_view bad :
         {R"({})", R"([])", R"({"skipped":{"_0":"a"},"failed":{"_0":"b"}})",
          R"({"deleted":{"_0":"a"}})", R"({"skipped":{}})", R"({"skipped":"a"})",
          R"({"skipped":{"_0":5}})", R"({"movedToTrash":{"trashPath":7}})"}) {
        EXPECT_THROW((void)json::parse(bad).get<ItemOutcome>(), std::exception) << bad;
    }
}

TEST(CleanupRecords, ReportCountsOutcomesAndTheBytesInTheTrash) {
    CleanupReport report;
    report.planID = fixedPlanID();
    report.started = fixedDate();
    report.journalPath = "/data/Cleanups/cleanup-x.jsonl";
    auto item = [](std::int64_t size, ItemOutcome outcome) {
        PlannedRemoval removal = fullRemoval();
        removal.snapshot.size = size;
        return ItemReport{removal, std::move(outcome), fixedDate(1), {"a note"}};
    };
    report.items = {item(100, ItemOutcome::movedToTrash("/t/1")),
                    item(20, ItemOutcome::movedToTrash(std::nullopt)),
                    item(4000, ItemOutcome::restored("/p/b.jpg")),
                    item(1, ItemOutcome::skipped("s")),
                    item(2, ItemOutcome::failed("f")),
                    item(3, ItemOutcome::unknown("u")),
                    item(5, ItemOutcome::skipped("t"))};
    EXPECT_EQ(report.moved(), 2);
    EXPECT_EQ(report.skipped(), 2);
    EXPECT_EQ(report.failed(), 1);
    EXPECT_EQ(report.unknown(), 1);
    EXPECT_EQ(report.restored(), 1);
    EXPECT_EQ(report.freedBytes(), 120);

    EXPECT_EQ(CleanupReport::decode(report.encoded()), report);
    report.finished = fixedDate(9);
    report.reconciled = true;
    EXPECT_NE(report.encoded().find(R"("finished":"2026-11-14T21:49:53Z","items":)"),
              std::string::npos);
    EXPECT_EQ(CleanupReport::decode(report.encoded()), report);
    EXPECT_TRUE(CleanupReport::decode("{").error().starts_with(journal_texts::kReportUnreadable));

    report.items = {item(INT64_MAX, ItemOutcome::movedToTrash("/a")),
                    item(INT64_MAX, ItemOutcome::movedToTrash("/b"))};
    EXPECT_EQ(report.freedBytes(), INT64_MAX);
}

TEST(CleanupRecords, ReportTitlesFollowHowTheOutcomesWereFound) {
    CleanupReport report;
    EXPECT_EQ(journal_texts::title(report), "Cleanup finished");
    report.reconciled = true;
    EXPECT_EQ(journal_texts::title(report), "An earlier cleanup was interrupted");
    EXPECT_EQ(journal_texts::interruptedExplanation(),
              "Brevant stopped while this cleanup was running. Each picture's outcome below was "
              "worked out afterwards by looking where it is \u2014 nothing was moved again.");
    EXPECT_EQ(journal_texts::historyCaption(),
              "Every Brevant run, with each picture's outcome. Kept on this computer only.");
}

} // namespace
} // namespace brevant
