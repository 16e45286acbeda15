#include "tests/cleanup/ExecutorFixtures.hpp"
#include "tests/fixtures/MountNamespace.hpp"
#include "tests/fixtures/TrashCli.hpp"

#include "engine/cleanup/CleanupExecutor.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/review/ReviewSession.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

namespace brevant {
namespace {

// The ASSERTs before each access guard these expecteds.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using testing::CleanupWorkspace;
using testing::exists;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::readFile;

TEST(ExecutorTrashCli, TrashCliListsAndRestoresWhatACleanupMoved) {
    if (auto missing = testing::trashCliMissing()) {
        GTEST_SKIP() << *missing;
    }
    CleanupWorkspace files;
    std::string a = files.photo("a.jpg", "orchard");
    std::string b = files.photo("Summer 2024/b 100%.jpg", "orchard");
    std::string c = files.photo("c.jpg", "orchard");
    ReviewSession session({testing::identicalGroup({a, b, c}, files.photos)}, nullptr, {}, {});
    ASSERT_TRUE(session.mark(b));
    ASSERT_TRUE(session.mark(c));
    auto plan = CleanupPlanner::plan(session);
    ASSERT_TRUE(plan.has_value());
    CleanupReport report = files.run(*plan);
    ASSERT_EQ(report.moved(), 2);

    std::string listed = testing::trashList();
    EXPECT_THAT(listed, HasSubstr(" " + b + "\n"));
    EXPECT_THAT(listed, HasSubstr(" " + c + "\n"));
    EXPECT_THAT(listed, Not(HasSubstr(a)));

    // trash-restore puts b back; our Put Back then finds it gone from the
    // Trash and leaves it be.
    EXPECT_EQ(testing::trashRestoreFirst(b), 0);
    EXPECT_EQ(readFile(b), "orchard");
    EXPECT_EQ(Restorer::restore(plan->removals[0], report.journalPath, b),
              RestoreOutcome::notInTrash());
    EXPECT_EQ(readFile(b), "orchard");

    // Our Put Back of c takes it off trash-list's list as well.
    EXPECT_EQ(Restorer::restore(plan->removals[1], report.journalPath, c),
              RestoreOutcome::restored(c));
    listed = testing::trashList();
    EXPECT_THAT(listed, Not(HasSubstr(b)));
    EXPECT_THAT(listed, Not(HasSubstr(c)));
    EXPECT_FALSE(exists(files.trashInfo("c.jpg")));
}

TEST(ExecutorTrashCli, ACleanupOnAnotherVolumeUsesThatVolumesTrashAndPutsBack) {
    CleanupWorkspace files;
    std::string volume = files.tree.folder("volume");
    auto outcome = testing::runInOwnMountNamespace([&] {
        if (!testing::mountTmpfs(volume)) {
            ADD_FAILURE() << "tmpfs could not be mounted in the namespace";
            return;
        }
        std::string a = files.tree.file("volume/DCIM/a.jpg", "on the card");
        std::string b = files.tree.file("volume/DCIM/b.jpg", "on the card");
        ReviewSession session({testing::identicalGroup({a, b}, volume)}, nullptr, {}, {});
        ASSERT_TRUE(session.mark(b));
        auto plan = CleanupPlanner::plan(session);
        ASSERT_TRUE(plan.has_value());
        CleanupReport report = files.run(*plan);
        ASSERT_EQ(report.items.size(), 1U);
        // Renamed within the card, never copied to the home Trash.
        std::string trashed = volume + "/.Trash-" + std::to_string(::getuid()) + "/files/b.jpg";
        EXPECT_EQ(report.items[0].outcome, testing::movedTo(trashed));
        EXPECT_EQ(readFile(trashed), "on the card");
        EXPECT_FALSE(exists(files.trashFiles()));
        if (!testing::trashCliMissing()) {
            EXPECT_THAT(testing::trashList(), HasSubstr(" " + b + "\n"));
        }

        EXPECT_EQ(Restorer::restore(plan->removals[0], report.journalPath, b),
                  RestoreOutcome::restored(b));
        EXPECT_EQ(readFile(b), "on the card");
        EXPECT_FALSE(exists(trashed));
        if (!testing::trashCliMissing()) {
            EXPECT_THAT(testing::trashList(), Not(HasSubstr(b)));
        }
    });
    if (outcome == testing::ChildOutcome::notAllowed) {
        GTEST_SKIP() << "mounting is not allowed here (no mount namespace)";
    }
    EXPECT_EQ(outcome, testing::ChildOutcome::passed) << "see the failures printed above";
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
