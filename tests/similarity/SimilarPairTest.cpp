#include "engine/similarity/SimilarPair.hpp"

#include "engine/support/Json.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace brevant {
namespace {

TEST(SimilarPair, IsWrittenWithItsKeysInOrderAndReadBack) {
    SimilarPair pair{.a = 3, .b = 9, .distance = 12, .shapesAgree = true, .detail = 256};
    nlohmann::ordered_json written = pair;
    EXPECT_EQ(written.dump(), R"({"a":3,"b":9,"distance":12.0,"detail":256,"shapesAgree":true})");
    EXPECT_EQ(written.get<SimilarPair>(), pair);

    pair.vision = 0.25F;
    written = pair;
    EXPECT_EQ(written.dump(),
              R"({"a":3,"b":9,"distance":12.0,"detail":256,"shapesAgree":true,"vision":0.25})");
    auto read = written.get<SimilarPair>();
    EXPECT_EQ(read, pair);
    ASSERT_TRUE(read.vision);
    EXPECT_EQ(*read.vision, 0.25F);
    EXPECT_NE(read,
              (SimilarPair{.a = 3, .b = 9, .distance = 12, .shapesAgree = true, .detail = 256}));
}

TEST(SimilarPair, RefusesADistanceThatIsNoWholeNumberOfBits) {
    for (const char* distance : {"12.5", "-1", "65", "1e9"}) {
        auto document =
            nlohmann::ordered_json::parse(std::string(R"({"a":0,"b":1,"distance":)") + distance +
                                          R"(,"detail":3,"shapesAgree":false})");
        EXPECT_THROW((void)document.get<SimilarPair>(), json::DecodeError) << distance;
    }
}

TEST(SimilarPair, TakesSixteenBytesWithAnAbsentVisionDistinctFromZero) {
    EXPECT_EQ(sizeof(SimilarPair), 16U);
    OptionalFloat absent;
    OptionalFloat zero = 0.0F;
    EXPECT_FALSE(absent);
    EXPECT_TRUE(zero);
    EXPECT_NE(absent, zero);
    EXPECT_EQ(absent, OptionalFloat(std::nullopt));
    EXPECT_EQ(zero.get(), std::optional(0.0F));
    zero.reset();
    EXPECT_EQ(zero, absent);
}

} // namespace
} // namespace brevant
