#include "app/cli/CleanupText.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevant {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

ItemReport item(std::string path, ItemOutcome outcome) {
    ItemReport report;
    report.removal.path = std::move(path);
    report.removal.snapshot.size = 1000;
    report.outcome = std::move(outcome);
    return report;
}

TEST(CleanupText, TheTrashNoteFollowsOnlyAReportWithPicturesInTheTrash) {
    const std::string note = "Space is freed when you empty the Trash.";
    CleanupReport report;
    report.journalPath = "/home/anna/.local/share/Brevant/Cleanups/x.jsonl";
    report.items = {item("/home/anna/Photos/a.jpg", ItemOutcome::skipped("It changed."))};
    std::string nothingMoved = cli::cleanup_text::report(report, "/home/anna");
    EXPECT_THAT(nothingMoved, HasSubstr("0 moved, 1 skipped"));
    EXPECT_THAT(nothingMoved, Not(HasSubstr(note)));

    report.items.push_back(item("/home/anna/Photos/b.jpg", ItemOutcome::movedToTrash({})));
    std::string oneMoved = cli::cleanup_text::report(report, "/home/anna");
    EXPECT_THAT(oneMoved, HasSubstr("1 moved, 1 skipped"));
    EXPECT_THAT(oneMoved, HasSubstr(note));

    report.items.back().outcome = ItemOutcome::restored("/home/anna/Photos/b.jpg");
    EXPECT_THAT(cli::cleanup_text::report(report, "/home/anna"), Not(HasSubstr(note)));
}

} // namespace
} // namespace brevant
