#include "engine/cleanup/Restorer.hpp"

#include "tests/cleanup/ExecutorFixtures.hpp"
#include "tests/fixtures/ScopedTimeZone.hpp"

#include "engine/cleanup/CleanupExecutor.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals and expecteds.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using testing::CleanupWorkspace;
using testing::exists;
using testing::readFile;
using testing::removalOf;
using testing::ScopedEnvironment;

// 2026-11-14T21:49:44Z as the C locale writes it briefly, in UTC.
constexpr std::string_view kWhen = "11/14/26 21:49";

// b was moved to the Trash by a cleanup; a is kept.
struct Trashed : CleanupWorkspace {
    testing::ScopedTimeZone zone{"UTC"};
    ScopedEnvironment allLocale{"LC_ALL", "C"};
    std::string a = photo("a.jpg", "lighthouse");
    std::string b = photo("b.jpg", "lighthouse");
    PlannedRemoval removal = removalOf(b, a, photos);
    CleanupPlan plan = testing::planOf({removal}, {photos});
    std::string journal = journalOf(plan);
    std::string trashed = trashFiles() + "/b.jpg";

    Trashed() {
        EXPECT_EQ(run(plan).moved(), 1);
        EXPECT_TRUE(exists(trashed));
    }

    [[nodiscard]] RestoreOutcome restore(const std::string& to) const {
        return Restorer::restore(removal, journal, to, testing::fixedDate());
    }

    [[nodiscard]] CleanupJournal::Parsed parsed() const {
        return CleanupJournal::parse(journal).value_or(CleanupJournal::Parsed{});
    }

    [[nodiscard]] std::vector<std::string> notes() const {
        auto all = parsed().notes;
        return all.contains(b) ? all.at(b) : std::vector<std::string>{};
    }
};

TEST(Restorer, PutsThePictureBackWhereItWasAndRecordsIt) {
    Trashed files;
    EXPECT_EQ(files.restore(files.b), RestoreOutcome::restored(files.b));
    EXPECT_EQ(readFile(files.b), "lighthouse");
    EXPECT_FALSE(exists(files.trashed));
    // The record goes with it, so no file manager lists it any more.
    EXPECT_FALSE(exists(files.trashInfo("b.jpg")));

    auto report = CleanupJournal::report(files.journal);
    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(report->items[0].outcome, ItemOutcome::restored(files.b));
    EXPECT_EQ(report->restored(), 1);
    EXPECT_EQ(report->freedBytes(), 0);

    // A second Put Back finds nothing in the Trash and says so.
    EXPECT_EQ(files.restore(files.b), RestoreOutcome::notInTrash());
    EXPECT_EQ(files.notes(),
              (std::vector<std::string>{"Put Back tried " + std::string(kWhen) +
                                        ": it is not in the Trash any more (emptied, or put back "
                                        "another way)."}));
    EXPECT_EQ(readFile(files.b), "lighthouse");
    EXPECT_EQ(CleanupJournal::report(files.journal)->items[0].outcome.kind,
              ItemOutcome::Kind::restored);
}

TEST(Restorer, NeverOverwritesWhatTookThePlaceAndOffersAnotherName) {
    Trashed files;
    files.tree.file("photos/b.jpg", "a new picture");
    EXPECT_EQ(files.restore(files.b), RestoreOutcome::occupied(files.b));
    EXPECT_EQ(readFile(files.b), "a new picture");
    EXPECT_EQ(readFile(files.trashed), "lighthouse");
    EXPECT_TRUE(exists(files.trashInfo("b.jpg")));
    EXPECT_EQ(files.notes(), (std::vector<std::string>{"Put Back refused " + std::string(kWhen) +
                                                       ": something else is now at " + files.b +
                                                       ", and it is never overwritten."}));
    EXPECT_EQ(CleanupJournal::report(files.journal)->items[0].outcome.kind,
              ItemOutcome::Kind::movedToTrash);

    std::string other = Restorer::alternativePath(files.b);
    EXPECT_EQ(other, files.photos + "/b (restored).jpg");
    EXPECT_EQ(files.restore(other), RestoreOutcome::restored(other));
    EXPECT_EQ(readFile(other), "lighthouse");
    EXPECT_EQ(readFile(files.b), "a new picture");
    EXPECT_EQ(CleanupJournal::report(files.journal)->items[0].outcome,
              ItemOutcome::restored(other));
}

TEST(Restorer, AnEmptiedTrashIsNotedAndNothingMoves) {
    Trashed files;
    // Emptying the Trash, as a file manager would.
    testing::removeFile(files.trashed);
    testing::removeFile(files.trashInfo("b.jpg"));
    EXPECT_EQ(files.restore(files.b), RestoreOutcome::notInTrash());
    EXPECT_FALSE(exists(files.b));
    ASSERT_EQ(files.notes().size(), 1U);
    EXPECT_TRUE(files.notes()[0].starts_with("Put Back tried "));
    auto report = CleanupJournal::report(files.journal);
    EXPECT_EQ(report->items[0].notes, files.notes());
    EXPECT_EQ(report->items[0].outcome.kind, ItemOutcome::Kind::movedToTrash);
}

TEST(Restorer, ADifferentFileOfTheSameNameInTheTrashIsNeverPutBack) {
    Trashed files;
    testing::moveFile(files.trashed, files.tree.path("kept-aside.jpg"));
    files.tree.file("data/Trash/files/b.jpg", "someone else's picture");
    EXPECT_EQ(files.restore(files.b), RestoreOutcome::notInTrash());
    EXPECT_FALSE(exists(files.b));
    EXPECT_EQ(readFile(files.trashed), "someone else's picture");
    EXPECT_TRUE(exists(files.trashInfo("b.jpg")));
}

TEST(Restorer, AFolderThatIsGoneFailsAndTheTrashKeepsThePicture) {
    Trashed files;
    std::string to = files.photos + "/gone/b.jpg";
    RestoreOutcome outcome = files.restore(to);
    std::string reason = "Its folder, " + files.photos +
                         "/gone, is not there any more \u2014 perhaps its drive is not connected";
    EXPECT_EQ(outcome, RestoreOutcome::failed(reason));
    EXPECT_EQ(files.notes(),
              (std::vector<std::string>{"Put Back failed " + std::string(kWhen) + ": " + reason +
                                        ". It is still in the Trash."}));
    EXPECT_EQ(readFile(files.trashed), "lighthouse");
    EXPECT_TRUE(exists(files.trashInfo("b.jpg")));
}

TEST(Restorer, OtherSystemRefusalsFailWithTheSystemsWords) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may write into any folder";
    }
    Trashed files;
    testing::setMode(files.photos, 0500);
    EXPECT_EQ(files.restore(files.b), RestoreOutcome::failed("Permission denied"));
    testing::setMode(files.photos, 0700);
    EXPECT_EQ(readFile(files.trashed), "lighthouse");
}

TEST(Restorer, AttemptNeedsARecordedPlaceInTheTrash) {
    Trashed files;
    EXPECT_EQ(Restorer::attempt(files.removal.snapshot.identity, std::nullopt, files.b),
              RestoreOutcome::notInTrash());
    EXPECT_EQ(Restorer::attempt(files.removal.snapshot.identity,
                                files.trashFiles() + "/nothing.jpg", files.b),
              RestoreOutcome::notInTrash());
    EXPECT_EQ(Restorer::attempt(files.removal.snapshot.identity, files.trashed, files.b),
              RestoreOutcome::restored(files.b));
    // attempt alone records nothing.
    EXPECT_EQ(CleanupJournal::report(files.journal)->items[0].outcome.kind,
              ItemOutcome::Kind::movedToTrash);
}

TEST(Restorer, AlternativeNamesCountUpThenTakeAPieceOfAUuid) {
    testing::TempTree tree;
    std::string path = tree.file("IMG_1.jpg", "x");
    EXPECT_EQ(Restorer::alternativePath(path), tree.path("IMG_1 (restored).jpg"));
    tree.file("IMG_1 (restored).jpg", "x");
    EXPECT_EQ(Restorer::alternativePath(path), tree.path("IMG_1 (restored 2).jpg"));
    // A dangling link takes its name too.
    tree.symbolicLink(tree.path("nowhere"), "IMG_1 (restored 2).jpg");
    EXPECT_EQ(Restorer::alternativePath(path), tree.path("IMG_1 (restored 3).jpg"));

    EXPECT_EQ(Restorer::alternativePath(tree.path("README")), tree.path("README (restored)"));
    EXPECT_EQ(Restorer::alternativePath(tree.path(".hidden.png")),
              tree.path(".hidden (restored).png"));
    EXPECT_EQ(Restorer::alternativePath(tree.path("a.b.tif")), tree.path("a.b (restored).tif"));

    for (int n = 3; n <= 999; ++n) {
        tree.file("IMG_1 (restored " + std::to_string(n) + ").jpg", "");
    }
    std::string last = Restorer::alternativePath(path);
    std::string prefix = tree.path("IMG_1 (restored ");
    ASSERT_TRUE(last.starts_with(prefix)) << last;
    ASSERT_TRUE(last.ends_with(").jpg")) << last;
    std::string piece = last.substr(prefix.size(), last.size() - prefix.size() - 5);
    EXPECT_EQ(piece.size(), 8U) << last;
    EXPECT_EQ(piece.find_first_not_of("0123456789ABCDEF"), std::string::npos) << last;
    EXPECT_FALSE(exists(last));
}

TEST(Restorer, TextsForTheInterface) {
    EXPECT_EQ(RestoreOutcome::occupied("/p/b.jpg").message("b.jpg"),
              "A file has taken this picture's place since it was moved. It is never "
              "overwritten: put the picture back under another name, or use your file manager.");
    EXPECT_EQ(RestoreOutcome::notInTrash().message("b.jpg"),
              "b.jpg is not in the Trash any more \u2014 it may have been emptied or put back "
              "already.");
    EXPECT_EQ(RestoreOutcome::failed("Permission denied").message("b.jpg"),
              "Permission denied. Your file manager's Restore from Trash may still work.");
    EXPECT_EQ(RestoreOutcome::restored("/p/b.jpg").message("b.jpg"), "b.jpg is back, at /p/b.jpg.");
    EXPECT_EQ(Restorer::generalNote(), "Space is freed when you empty the Trash. An emptied Trash "
                                       "cannot be undone by Brevant.");
    EXPECT_EQ(Restorer::noteFor(RestoreOutcome::restored("/p/b.jpg"), testing::fixedDate()),
              std::nullopt);
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
