#include "engine/review/ReviewStore.hpp"

#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace brevant {
namespace {

using testing::readFile;
using testing::TempTree;

constexpr double kUnixNow = 1'700'000'000.75;

ReviewStore::Clock fixedClock() {
    return [] { return Date::fromUnixSeconds(kUnixNow); };
}

SavedReview review(std::vector<std::string> folders, ScanMode mode, std::string marked) {
    FileSnapshot snapshot{.identity = {.device = 2049, .inode = 77},
                          .size = 1234,
                          .modifiedSeconds = 1'699'999'999,
                          .modifiedNanoseconds = 123'456'789,
                          .linkCount = 1,
                          .isRegularFile = true};
    return {.folders = std::move(folders),
            .mode = mode,
            .saved = Date::fromUnixSeconds(kUnixNow),
            .marks = {{.path = marked, .snapshot = snapshot}},
            .reviewed = {{.id = "similar:/p/a.jpg:0011223344556677",
                          .members = {{.path = "/p/a.jpg", .snapshot = snapshot},
                                      {.path = marked, .snapshot = snapshot}}}}};
}

TEST(ReviewStore, KeepsOneReviewPerFoldersAndModeNewestFirst) {
    TempTree tree;
    std::string file = tree.path("data/reviews.json");
    // The same folders in any order, at another preset: the same review.
    SavedReview similar =
        review({"/o", "/p"}, ScanMode::similar(SimilarityPreset::balanced), "/p/d.jpg");
    {
        ReviewStore store(file, fixedClock());
        ASSERT_TRUE(store.save(
            review({"/p", "/o"}, ScanMode::similar(SimilarityPreset::broad), "/p/b.jpg")));
        ASSERT_TRUE(store.save(review({"/p"}, ScanMode::series(), "/p/c.jpg")));
        ASSERT_TRUE(store.save(similar));
    }
    ReviewStore reopened(file, fixedClock());
    EXPECT_EQ(reopened.setAsideTo(), std::nullopt);
    auto all = reopened.all();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].marks.front().path, "/p/d.jpg");
    EXPECT_EQ(all[0].folders, (std::vector<std::string>{"/o", "/p"}));
    EXPECT_EQ(all[0].mode.preset, SimilarityPreset::balanced);
    EXPECT_EQ(all[1].mode.kind, ScanMode::Kind::series);
    EXPECT_EQ(reopened.latest(), all[0]);
    auto found = reopened.find({"/p", "/o"}, ScanMode::Kind::similar);
    ASSERT_TRUE(found.has_value());
    EXPECT_TRUE(*found == similar);
    EXPECT_EQ(reopened.find({"/p"}, ScanMode::Kind::identical), std::nullopt);
}

TEST(ReviewStore, ForgetsTheOldestBeyondItsLimit) {
    ReviewStore store(std::nullopt);
    for (std::size_t n = 0; n <= ReviewStore::kKept; ++n) {
        ASSERT_TRUE(store.save(review({"/p" + std::to_string(n)}, ScanMode::identical(), "/x")));
    }
    auto all = store.all();
    ASSERT_EQ(all.size(), ReviewStore::kKept);
    EXPECT_EQ(all.front().folders.front(), "/p" + std::to_string(ReviewStore::kKept));
    EXPECT_EQ(store.find({"/p0"}, ScanMode::Kind::identical), std::nullopt);
}

TEST(ReviewStore, ADamagedFileIsMovedAsideAndNeverWrittenOver) {
    struct Case {
        const char* name;
        std::string text;
    };

    for (const Case& damaged :
         {Case{"not JSON", "{ nope"}, Case{"wrong shape", R"({"folders": []})"},
          Case{"unknown mode", R"([{"folders": ["/p"], "mode": "blurry",
                                    "preset": "balanced", "saved": 1, "marks": [],
                                    "reviewed": []}])"}}) {
        SCOPED_TRACE(damaged.name);
        TempTree tree;
        std::string file = tree.file("data/reviews.json", damaged.text);
        ReviewStore store(file, fixedClock());
        std::string aside = file + ".damaged-1700000000";
        EXPECT_EQ(store.setAsideTo(), aside);
        EXPECT_EQ(readFile(aside), damaged.text);
        EXPECT_TRUE(store.all().empty());
        ASSERT_TRUE(store.save(review({"/p"}, ScanMode::identical(), "/p/b.jpg")));
        EXPECT_EQ(ReviewStore(file).all().size(), 1U);
        EXPECT_EQ(readFile(aside), damaged.text);
    }
}

TEST(ReviewStore, AFileThatCannotBeMovedAsideIsLeftAlone) {
    TempTree tree;
    std::string file = tree.file("data/reviews.json", "{ nope");
    std::string aside = file + ".damaged-1700000000";
    tree.file("data/reviews.json.damaged-1700000000", "taken");
    ReviewStore store(file, fixedClock());
    EXPECT_EQ(store.setAsideTo(), std::nullopt);
    EXPECT_FALSE(store.save(review({"/p"}, ScanMode::identical(), "/p/b.jpg")));
    EXPECT_EQ(readFile(file), "{ nope");
    EXPECT_EQ(readFile(aside), "taken");
}

} // namespace
} // namespace brevant
