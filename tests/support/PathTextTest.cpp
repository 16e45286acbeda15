#include "engine/support/PathText.hpp"

#include <gtest/gtest.h>

#include <random>

namespace brevant {
namespace {

TEST(PathText, ValidNamesAreStoredUnchanged) {
    for (std::string_view name : {"/photos/IMG_1.JPG", "/fotos/\xC3\xA9t\xC3\xA9/\xE5\x86\x99.heic",
                                  "/a/two\nlines.png", "/emoji/\xF0\x9F\x93\xB7.jpg", ""}) {
        EXPECT_EQ(path_text::encode(name), name);
        EXPECT_EQ(path_text::decode(name), name);
    }
}

TEST(PathText, EveryByteStringSurvivesARoundTrip) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<int> length(0, 40);
    for (int i = 0; i < 5000; ++i) {
        std::string bytes;
        for (int n = length(random); n > 0; --n) {
            bytes.push_back(static_cast<char>(byte(random)));
        }
        std::string stored = path_text::encode(bytes);
        ASSERT_TRUE(path_text::isValidUtf8(stored));
        ASSERT_EQ(path_text::decode(stored), bytes);
    }
}

TEST(PathText, EscapeRangeIsItselfEscaped) {
    std::string latin1 = "caf\xE9.jpg";
    std::string stored = path_text::encode(latin1);
    EXPECT_EQ(stored, "caf\xEE\xBF\xA9.jpg"); // U+EFE9
    // A real U+EFE9 in a name must not decode to the byte E9.
    std::string real = "caf\xEE\xBF\xA9.jpg";
    EXPECT_NE(path_text::encode(real), real);
    EXPECT_EQ(path_text::decode(path_text::encode(real)), real);
    EXPECT_NE(path_text::encode(real), stored);
}

TEST(PathText, DisplayKeepsToOneLine) {
    EXPECT_EQ(path_text::display("/a/two\nlines\t\x01.png"), "/a/two\\nlines\\t\\x01.png");
    EXPECT_EQ(path_text::display("/a/caf\xE9.jpg"), "/a/caf\\xE9.jpg");
    EXPECT_EQ(path_text::display("/a/\xC3\xA9t\xC3\xA9"), "/a/\xC3\xA9t\xC3\xA9");
}

} // namespace
} // namespace brevant
