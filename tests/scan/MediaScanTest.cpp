#include "engine/scan/MediaScan.hpp"

#include "tests/cleanup/ExecutorFixtures.hpp"
#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/LivePhotoFixtures.hpp"
#include "tests/fixtures/ScopedTimeZone.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/cleanup/ExecutorTexts.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/platform/LivePhotoTags.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using platform::LiveTags;
using testing::TempTree;

constexpr std::int64_t kTaken = 1714558830; // 2024-05-01T10:20:30Z

struct ConfirmCase {
    std::string name;
    LiveTags photo;
    LiveTags movie;
    bool pair = false;
};

class MediaScanConfirms : public ::testing::TestWithParam<ConfirmCase> {};

TEST_P(MediaScanConfirms, DecidesByIdentifierElseByLengthAndDate) {
    const ConfirmCase& c = GetParam();
    EXPECT_EQ(MediaScan::confirms(c.photo, c.movie), c.pair);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MediaScanConfirms,
    ::testing::Values(
        ConfirmCase{"sameIdentifier", {"A", kTaken, {}}, {"A", kTaken + 1, 2.5}, true},
        // The identifiers decide alone: a long movie dated days away still pairs.
        ConfirmCase{"sameIdentifierLongMovie", {"A", kTaken, {}}, {"A", 0, 60.0}, true},
        ConfirmCase{"differentIdentifiers", {"A", kTaken, {}}, {"B", kTaken, 2.5}, false},
        ConfirmCase{"onlyThePhotoHasOne", {"A", kTaken, {}}, {{}, kTaken - 1, 2.5}, true},
        ConfirmCase{"onlyTheMovieHasOne", {{}, kTaken, {}}, {"B", kTaken + 2, 2.9}, true},
        ConfirmCase{"shortAndClose", {{}, kTaken, {}}, {{}, kTaken + 5, 5.0}, true},
        ConfirmCase{"tooLong", {{}, kTaken, {}}, {{}, kTaken, 5.5}, false},
        ConfirmCase{"tooFarApart", {{}, kTaken, {}}, {{}, kTaken - 6, 2.5}, false},
        ConfirmCase{"movieUndated", {{}, kTaken, {}}, {{}, {}, 2.5}, false},
        ConfirmCase{"photoUndated", {{}, {}, {}}, {{}, kTaken, 2.5}, false},
        ConfirmCase{"notAMovie", {{}, kTaken, {}}, {{}, kTaken, {}}, false}),
    [](const auto& info) { return info.param.name; });

TEST(LivePhotoTags, ReadsDatesWithAndWithoutTheirZones) {
    testing::ScopedTimeZone zone("Europe/Paris");
    using Tags = platform::LivePhotoTags;
    EXPECT_EQ(Tags::isoSeconds("2024-05-01T10:20:30.000000Z"), kTaken);
    EXPECT_EQ(Tags::isoSeconds("2024-05-01T12:20:30+0200"), kTaken);
    EXPECT_EQ(Tags::isoSeconds("2024-05-01T06:20:30-04:00"), kTaken);
    EXPECT_EQ(Tags::isoSeconds("2024-05-01T12:20:30"), kTaken);
    EXPECT_EQ(Tags::isoSeconds("yesterday"), std::nullopt);
    EXPECT_EQ(Tags::isoSeconds("2024-05-01T12:20:30 Paris"), std::nullopt);
    EXPECT_EQ(Tags::exifSeconds("2024:05:01 13:20:30", "+03:00"), kTaken);
    EXPECT_EQ(Tags::exifSeconds("2024:05:01 12:20:30", std::nullopt), kTaken);
    EXPECT_EQ(Tags::exifSeconds("    :  :     :  :  ", std::nullopt), std::nullopt);
}

class MediaScanFiles : public ::testing::Test {
protected:
    TempTree tree_;
    std::string folder_ = tree_.folder("photos");
    testing::ScopedTimeZone zone_{"UTC"};

    // The pipeline's Live Photos mode over the folder: its groups as
    // "photo name + movie name".
    [[nodiscard]] std::vector<std::string> pairs() const {
        CancellationFlag cancel;
        auto outcome = ScanPipeline().run(
            {.source = ScanSource::ofFolders({folder_}), .mode = ScanMode::livePhotos()}, cancel,
            {});
        EXPECT_TRUE(outcome.has_value());
        std::vector<std::string> names;
        for (const auto& group : outcome.value_or(ScanOutcome{}).groups) {
            EXPECT_EQ(group.kind, MatchKind::liveMovie);
            std::string line;
            for (const auto& member : group.members) {
                line += (line.empty() ? "" : " + ") + PathNames::lastComponent(member.path);
            }
            names.push_back(line);
        }
        return names;
    }
};

TEST_F(MediaScanFiles, ReadsTheIdentifierFromTheMakerNoteAndTheMovie) {
    auto pair = testing::writeLivePair(folder_,
                                       {.photoIdentifier = "3A6F1B2C-0D4E-4F5A-8B6C-7D8E9F0A1B2C",
                                        .movieIdentifier = "3A6F1B2C-0D4E-4F5A-8B6C-7D8E9F0A1B2C"});
    LiveTags photo = platform::LivePhotoTags::ofPhoto(pair.photo);
    LiveTags movie = platform::LivePhotoTags::ofMovie(pair.movie);
    EXPECT_EQ(photo.contentIdentifier, "3A6F1B2C-0D4E-4F5A-8B6C-7D8E9F0A1B2C");
    EXPECT_EQ(photo.captured, kTaken);
    EXPECT_EQ(movie.contentIdentifier, photo.contentIdentifier);
    EXPECT_EQ(movie.captured, kTaken - 1);
    ASSERT_TRUE(movie.durationSeconds.has_value());
    EXPECT_NEAR(*movie.durationSeconds, 2.0, 0.1);
}

TEST_F(MediaScanFiles, PairsByIdentifierOrByAShortMovieTakenTogether) {
    (void)testing::writeLivePair(folder_, {.photoIdentifier = "ONE",
                                           .movieIdentifier = "ONE",
                                           .movieDate = "2019-01-01T00:00:00Z",
                                           .photoName = "IMG_0001.JPG",
                                           .movieName = "IMG_0001.mov"});
    // Named as a pair, taken together, but the identifiers say otherwise.
    (void)testing::writeLivePair(folder_, {.photoIdentifier = "TWO",
                                           .movieIdentifier = "NOT-TWO",
                                           .photoName = "IMG_0002.JPG",
                                           .movieName = "IMG_0002.MOV",
                                           .seed = 2});
    // No identifiers: a short movie taken with the photo.
    (void)testing::writeLivePair(
        folder_, {.photoName = "IMG_0003.jpg", .movieName = "IMG_0003.MOV", .seed = 3});
    // No identifiers: a ten-second movie of the same name is a video of its own.
    (void)testing::writeLivePair(
        folder_,
        {.movieFrames = 250, .photoName = "IMG_0004.JPG", .movieName = "IMG_0004.MOV", .seed = 4});
    // A movie with no photo of its name.
    (void)testing::writeLivePair(
        folder_, {.photoName = "IMG_0005.JPG", .movieName = "IMG_0006.MOV", .seed = 5});

    EXPECT_THAT(pairs(), ::testing::ElementsAre("IMG_0001.JPG + IMG_0001.mov",
                                                "IMG_0003.jpg + IMG_0003.MOV"));
}

TEST_F(MediaScanFiles, ALinkedOrEmptyMovieIsNoHalf) {
    (void)testing::writeLivePair(folder_, {.movieName = "elsewhere.mov"});
    (void)tree_.symbolicLink("photos/elsewhere.mov", "photos/IMG_0001.MOV");
    (void)testing::writeScene(folder_ + "/IMG_0002.JPG", 64, 48, 2,
                              {.exifDate = "2024:05:01 10:20:30"});
    (void)tree_.file("photos/IMG_0002.MOV", "");
    EXPECT_THAT(pairs(), ::testing::IsEmpty());
}

// A Live Photos cleanup through the planner and the executor: the movie
// goes, the photo stays, Put Back brings the movie back as it was; a movie
// changed since the scan stays where it is.
TEST(MediaScanCleanup, MovesTheMovieKeepsThePhotoAndSkipsAChangedMovie) {
    testing::ScopedTimeZone zone("UTC");
    testing::CleanupWorkspace files;
    auto kept =
        testing::writeLivePair(files.photos, {.photoIdentifier = "A", .movieIdentifier = "A"});
    auto changed = testing::writeLivePair(files.photos, {.photoIdentifier = "B",
                                                         .movieIdentifier = "B",
                                                         .photoName = "IMG_0002.JPG",
                                                         .movieName = "IMG_0002.MOV",
                                                         .seed = 2});
    std::string movieBytes = testing::readFile(kept.movie);
    std::string photoBytes = testing::readFile(kept.photo);
    CancellationFlag cancel;
    auto outcome = ScanPipeline().run({.source = ScanSource::ofFolders({files.photos}),
                                       .mode = ScanMode::livePhotos(),
                                       .review = ReviewRules{}},
                                      cancel, {});
    ASSERT_TRUE(outcome.has_value());
    ASSERT_TRUE(outcome->session);
    ReviewSession& session = *outcome->session;
    ASSERT_EQ(session.groups().size(), 2U);
    for (const auto& group : session.groups()) {
        auto suggestion = session.suggestion(group);
        ASSERT_TRUE(suggestion.has_value());
        EXPECT_EQ(suggestion->keeperID, group.members.front().path);
        auto refusal = session.refusal(group.members.front().path);
        ASSERT_TRUE(refusal.has_value());
        EXPECT_EQ(refusal->kind, MarkRefusal::Kind::fixed);
    }
    EXPECT_EQ(session.markAllSuggested(), 2);
    auto plan = CleanupPlanner::plan(session);
    ASSERT_TRUE(plan.has_value());
    ASSERT_EQ(plan->removals.size(), 2U);
    EXPECT_EQ(plan->removals[0].path, kept.movie);
    EXPECT_EQ(plan->removals[0].matchKind, MatchKind::liveMovie);

    testing::setModified(changed.movie, 1600000000, 0);
    CleanupReport report = files.run(*plan);
    EXPECT_EQ(report.moved(), 1);
    ASSERT_EQ(report.items.size(), 2U);
    EXPECT_EQ(report.items[1].outcome, ItemOutcome::skipped(std::string(executor_texts::kChanged)));
    EXPECT_TRUE(testing::exists(changed.movie));
    EXPECT_FALSE(testing::exists(kept.movie));
    EXPECT_EQ(testing::readFile(kept.photo), photoBytes);
    EXPECT_TRUE(testing::exists(files.trashInfo("IMG_0001.MOV")));

    EXPECT_EQ(Restorer::restore(plan->removals[0], report.journalPath, kept.movie),
              RestoreOutcome::restored(kept.movie));
    EXPECT_EQ(testing::readFile(kept.movie), movieBytes);
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
