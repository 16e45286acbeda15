#include "engine/support/Uuid.hpp"

#include "engine/support/Json.hpp"

#include <gtest/gtest.h>

#include <string>
#include <unordered_set>

namespace brevant {
namespace {

TEST(Uuid, NewOnesDifferAndReadBackFromTheirUpperCaseText) {
    Uuid first = Uuid::make();
    Uuid second = Uuid::make();
    EXPECT_NE(first, second);
    std::string text = first.text();
    ASSERT_EQ(text.size(), 36U);
    for (std::size_t at : {8U, 13U, 18U, 23U}) {
        EXPECT_EQ(text[at], '-');
    }
    EXPECT_EQ(text.find_first_not_of("0123456789ABCDEF-"), std::string::npos) << text;
    // Version 4 (random).
    EXPECT_EQ(text[14], '4');
    EXPECT_EQ(Uuid::parse(text), first);
    std::unordered_set<Uuid> both{first, second, first};
    EXPECT_EQ(both.size(), 2U);
    EXPECT_TRUE(first < second || second < first);
}

TEST(Uuid, ParsesEitherCaseButOnlyTheCanonicalForm) {
    auto upper = Uuid::parse("0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9");
    ASSERT_TRUE(upper);
    EXPECT_EQ(Uuid::parse("0f1e2d3c-4b5a-4978-8695-a4b3c2d1e0f9"), upper);
    EXPECT_EQ(upper->text(), "0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9");
    EXPECT_EQ(upper->bytes[0], 0x0F);
    EXPECT_EQ(upper->bytes[15], 0xF9);
    for (std::string_view bad :
         {"", "0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F", "0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9A",
          "0F1E2D3C4B5A-4978-8695-A4B3C2D1E0F9A", "0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0FG",
          "{F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F}"}) {
        EXPECT_FALSE(Uuid::parse(bad)) << bad;
    }
    std::string withNul = "0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9";
    withNul[35] = '\0';
    EXPECT_FALSE(Uuid::parse(withNul));
}

TEST(Uuid, IsCodedAsItsText) {
    Uuid uuid = Uuid::make();
    json::Json j = uuid;
    EXPECT_EQ(j, json::Json(uuid.text()));
    EXPECT_EQ(j.get<Uuid>(), uuid);
    EXPECT_THROW((void)json::Json("not a uuid").get<Uuid>(), json::DecodeError);
    EXPECT_THROW((void)json::Json(12).get<Uuid>(), std::exception);
}

} // namespace
} // namespace brevant
