#include "engine/scan/CatalogReference.hpp"

#include "engine/support/Json.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

struct KindCase {
    CatalogReference reference;
    CatalogApplication application;
    const char* stored;
    const char* item;
};

class CatalogReferenceKinds : public ::testing::TestWithParam<KindCase> {};

// Each kind is stored under its own key, as records written before the
// reference was one field have it, and reads back as the same kind.
TEST_P(CatalogReferenceKinds, StoresUnderTheKindsKeyAndReadsBack) {
    const auto& one = GetParam();
    EXPECT_EQ(one.reference.application(), one.application);
    EXPECT_EQ(one.reference.imageID(), 7);

    json::Json j = json::Json::object();
    putReference(j, one.reference);
    ASSERT_TRUE(j.contains(one.stored)) << j.dump();
    EXPECT_EQ(j.size(), 1U);
    EXPECT_EQ(getReference(j), one.reference);

    json::Json item = json::Json::object();
    putItem(item, one.reference.item());
    EXPECT_EQ(item.dump(), std::string(R"({")") + one.item + R"(":7})");
    EXPECT_EQ(getItem(item), (CatalogItem{one.application, 7}));
}

INSTANTIATE_TEST_SUITE_P(
    EveryKind, CatalogReferenceKinds,
    ::testing::Values(KindCase{CatalogReference{LightroomRef{.imageID = 7, .virtualCopies = 1}},
                               CatalogApplication::lightroom, "lightroom", "lightroomImageID"},
                      KindCase{CatalogReference{CaptureOneRef{.imageID = 7, .variants = 2}},
                               CatalogApplication::captureOne, "captureOne", "captureOneImageID"}));

TEST(CatalogReference, AbsentStaysAbsentAndAnOldDoubleItemReadsAsTheFirstKind) {
    json::Json j = json::Json::object();
    putReference(j, std::nullopt);
    putItem(j, std::nullopt);
    EXPECT_TRUE(j.empty());
    EXPECT_EQ(getReference(j), std::nullopt);
    EXPECT_EQ(getItem(j), std::nullopt);

    // Journals from before could name both ids on one removal.
    auto both = json::Json::parse(R"({"lightroomImageID":42,"captureOneImageID":7})");
    EXPECT_EQ(getItem(both), (CatalogItem{CatalogApplication::lightroom, 42}));
}

TEST(CatalogReference, AnswersInTheTermsOfItsKind) {
    CatalogReference lightroom{LightroomRef{.rating = 2, .sidecarExtensions = {"xmp"}}};
    EXPECT_TRUE(lightroom.workedOn());
    EXPECT_EQ(lightroom.workSummary(), "2 stars");
    EXPECT_TRUE(lightroom.keepsRawPairTogether());
    EXPECT_EQ(lightroom.keepReason(), std::nullopt);

    CatalogReference captureOne{CaptureOneRef{.colorTags = {0, 1}, .keywords = 1}};
    EXPECT_EQ(captureOne.workSummary(), "colour tagged, has a keyword");
    EXPECT_EQ(captureOne.workDetails(), "tagged Red, has keywords");
    EXPECT_FALSE(captureOne.keepsRawPairTogether());
    EXPECT_NE(captureOne.as<CaptureOneRef>(), nullptr);
    EXPECT_EQ(captureOne.as<LightroomRef>(), nullptr);
}

} // namespace
} // namespace brevant
