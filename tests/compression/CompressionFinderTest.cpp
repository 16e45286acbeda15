#include "engine/compression/CompressionFinder.hpp"

#include "tests/compression/CompressionFixtures.hpp"

#include "engine/compression/CompressionTexts.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevant {
namespace {

using testing::CompressionWorkspace;
namespace texts = compression_texts;

std::vector<std::string> pathsOf(const CompressionPlan& plan) {
    std::vector<std::string> paths;
    paths.reserve(plan.items.size());
    for (const auto& item : plan.items) {
        paths.push_back(item.path);
    }
    std::ranges::sort(paths);
    return paths;
}

TEST(CompressionFinder, FindsJpegTiffAndVideosNotAlreadySmallHevcAboveTheSmallestSize) {
    CompressionWorkspace w;
    std::string jpeg = w.turnedPhoto("big.jpg");
    std::string tiff = testing::writeScene(w.tree.path("photos/scan.tif"), 600, 400, 3);
    (void)testing::writeScene(w.tree.path("photos/small.jpg"), 64, 48, 4);
    (void)testing::writeScene(w.tree.path("photos/drawing.png"), 600, 400, 5);
    std::string video = w.video("clip.mov");
    std::string hevc = w.video("done.mov", {.codec = "hevc"});
    std::string linked = w.turnedPhoto("linked.jpg", 9);
    (void)w.tree.hardLink("photos/linked.jpg", "photos/other name.jpg");
    std::string missing = w.tree.path("nowhere");
    CancellationFlag cancel;

    auto found =
        CompressionFinder::find({.folders = {w.photos, missing}, .minBytes = 20'000}, cancel);

    EXPECT_EQ(pathsOf(found.plan), (std::vector<std::string>{jpeg, video, tiff}));
    ASSERT_EQ(found.refused.size(), 1U);
    EXPECT_EQ(found.refused[0].path, missing);
    EXPECT_EQ(found.plan.roots, std::vector<std::string>{w.photos});
    EXPECT_THAT(found.passedOver,
                ::testing::IsSupersetOf({PassedOver{hevc, std::string(texts::kAlreadyHevc)},
                                         PassedOver{linked, std::string(texts::kHardLinked)}}));
    for (const auto& item : found.plan.items) {
        EXPECT_GT(item.estimatedSaving, 0) << item.path;
        EXPECT_LT(item.estimatedSaving, item.snapshot.size) << item.path;
    }
}

TEST(CompressionFinder, LooksOnlyForTheKindAskedFor) {
    CompressionWorkspace w;
    std::string jpeg = w.turnedPhoto("big.jpg");
    std::string video = w.video("clip.mov");
    CancellationFlag cancel;

    auto photos = CompressionFinder::find(
        {.folders = {w.photos}, .photos = true, .videos = false, .minBytes = 0}, cancel);
    auto videos = CompressionFinder::find(
        {.folders = {w.photos}, .photos = false, .videos = true, .minBytes = 0}, cancel);

    EXPECT_EQ(pathsOf(photos.plan), std::vector<std::string>{jpeg});
    EXPECT_EQ(pathsOf(videos.plan), std::vector<std::string>{video});
}

} // namespace
} // namespace brevant
