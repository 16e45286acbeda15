#include "engine/scan/CaptureOneRef.hpp"
#include "engine/scan/LightroomRef.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

TEST(LightroomRef, WorkIsAnythingButARejectedFlag) {
    EXPECT_FALSE(LightroomRef{}.workedOn());
    EXPECT_FALSE(LightroomRef{.pick = -1}.workedOn());
    EXPECT_FALSE(LightroomRef{.sidecarExtensions = {"xmp"}}.workedOn());
    EXPECT_TRUE(LightroomRef{.pick = 1}.workedOn());
    EXPECT_TRUE(LightroomRef{.rating = 1}.workedOn());
    EXPECT_TRUE(LightroomRef{.isEdited = true}.workedOn());
    EXPECT_TRUE(LightroomRef{.virtualCopies = 1}.workedOn());
    EXPECT_TRUE(LightroomRef{.collections = 1}.workedOn());
    EXPECT_TRUE(LightroomRef{.keywords = 1}.workedOn());
    EXPECT_TRUE(LightroomRef{.colorLabel = "Red"}.workedOn());
}

TEST(LightroomRef, WorkSummaryNamesEachKindOfWorkInItsOrder) {
    EXPECT_EQ(LightroomRef{.pick = -1}.workSummary(), "");
    EXPECT_EQ((LightroomRef{.pick = 1,
                            .rating = 1,
                            .isEdited = true,
                            .virtualCopies = 1,
                            .collections = 1,
                            .keywords = 1,
                            .colorLabel = "Green"}
                   .workSummary()),
              "edited, has a virtual copy, flagged as a pick, 1 star, labelled Green, in a "
              "collection, has a keyword");
    EXPECT_EQ((LightroomRef{.rating = 4, .virtualCopies = 3, .collections = 2, .keywords = 5}
                   .workSummary()),
              "has 3 virtual copies, 4 stars, in 2 collections, has keywords");
}

TEST(CaptureOneRef, WorkNeedsASecondVariantOrAnActualTag) {
    EXPECT_FALSE(CaptureOneRef{}.workedOn());
    EXPECT_FALSE((CaptureOneRef{.variants = 1, .colorTags = {0, 0}}.workedOn()));
    EXPECT_TRUE(CaptureOneRef{.variants = 2}.workedOn());
    EXPECT_TRUE(CaptureOneRef{.rating = 1}.workedOn());
    EXPECT_TRUE((CaptureOneRef{.colorTags = {0, 3}}.workedOn()));
    EXPECT_TRUE(CaptureOneRef{.isEdited = true}.workedOn());
    EXPECT_TRUE(CaptureOneRef{.albums = 1}.workedOn());
    EXPECT_TRUE(CaptureOneRef{.keywords = 1}.workedOn());
}

} // namespace
} // namespace brevant
