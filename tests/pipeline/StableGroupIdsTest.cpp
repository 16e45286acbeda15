#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/pipeline/ScanPipeline.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace brevant {
namespace {

using testing::TempTree;

std::vector<std::string> ids(const std::string& folder, ScanMode mode) {
    ScanRequest request{.source = ScanSource::ofFolders({folder}), .mode = mode};
    auto outcome = ScanPipeline().run(request, CancellationFlag(), {});
    EXPECT_TRUE(outcome.has_value());
    std::vector<std::string> found;
    if (outcome) {
        for (const auto& group : outcome->found()) {
            found.push_back(group.id);
        }
    }
    return found;
}

TEST(StableGroupIds, AGroupKeepsItsIdAcrossRescansUntilAMemberChanges) {
    TempTree tree;
    std::string original = testing::writeScene(tree.path("photos/a.jpg"), 640, 480, 61,
                                               {.exifDate = "2024:05:01 10:00:00"});
    std::string copy = tree.path("photos/b.jpg");
    testing::saveImage(testing::openImage(original), copy,
                       {.quality = 75, .exifDate = "2024:05:01 10:00:01"});
    for (ScanMode mode : {ScanMode::similar(SimilarityPreset::balanced), ScanMode::series()}) {
        SCOPED_TRACE(rawValue(mode.kind));
        auto first = ids(tree.path("photos"), mode);
        ASSERT_EQ(first.size(), 1u);
        EXPECT_EQ(ids(tree.path("photos"), mode), first);

        // The same picture written again is another file version.
        std::error_code error;
        auto when = std::filesystem::last_write_time(copy, error);
        std::filesystem::last_write_time(copy, when + std::chrono::seconds(5), error);
        ASSERT_FALSE(error);
        auto changed = ids(tree.path("photos"), mode);
        ASSERT_EQ(changed.size(), 1u);
        EXPECT_NE(changed, first);
    }
}

} // namespace
} // namespace brevant
