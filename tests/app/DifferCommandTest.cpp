#include "tests/app/ProgramRun.hpp"
#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>
#include <string>

namespace brevant::cli {
namespace {

using ::testing::HasSubstr;
using testing::TempTree;

class DifferCommandTest : public ::testing::Test {
protected:
    Outcome brevant(const std::string& arguments) {
        return runCaptured(tree_, fmt::format("BREVANT_DATA_DIR='{}' '{}' {}", tree_.path("data"),
                                              BREVANT_BINARY, arguments));
    }

    TempTree tree_;
};

TEST_F(DifferCommandTest, DeclaredPicturesLeaveTheReportsGroupUntilForgotten) {
    std::string original = testing::writeScene(tree_.path("photos/a.jpg"), 800, 600, 51);
    std::string resaved = tree_.path("photos/b.jpg");
    testing::saveImage(testing::openImage(original), resaved, {.quality = 70});
    std::string report = fmt::format("--similar '{}'", tree_.path("photos"));
    ASSERT_THAT(brevant(report).out, HasSubstr("similar: 2 photos"));

    Outcome declared = brevant(fmt::format("differ '{}' '{}'", original, resaved));
    EXPECT_EQ(declared.status, 0) << declared.err;
    EXPECT_EQ(declared.out,
              fmt::format("Different photos (1), never grouped together again:\n    {}\n    {}\n"
                          "To undo: brevant differ --forget 1\n",
                          original, resaved));
    EXPECT_THAT(brevant(report).out, ::testing::Not(HasSubstr("similar:")));
    EXPECT_THAT(brevant("differ --list").out,
                ::testing::MatchesRegex(fmt::format("1  .*\n    {}\n    {}\n", original, resaved)));

    Outcome forgotten = brevant("differ --forget 1");
    EXPECT_EQ(forgotten.status, 0) << forgotten.err;
    EXPECT_THAT(brevant(report).out, HasSubstr("similar: 2 photos"));
    EXPECT_EQ(brevant("differ --list").out, "No pictures were said to be different photos.\n");
}

TEST_F(DifferCommandTest, RefusesIdenticalCopiesAndADamagedFile) {
    std::string a = tree_.file("photos/a.jpg", "same bytes");
    std::string copy = tree_.file("photos/copy.jpg", "same bytes");
    Outcome identical = brevant(fmt::format("differ '{}' '{}'", a, copy));
    EXPECT_EQ(identical.status, 2);
    EXPECT_EQ(identical.err, fmt::format("brevant differ: {} and {} are identical copies, so they "
                                         "cannot be different photos; nothing was recorded.\n",
                                         a, copy));

    std::string file = tree_.file("data/not-duplicates.json", "[{");
    std::string b = tree_.file("photos/b.jpg", "other bytes");
    Outcome damaged = brevant(fmt::format("differ '{}' '{}'", a, b));
    EXPECT_EQ(damaged.status, 1);
    EXPECT_THAT(damaged.err, HasSubstr("brevant differ --reset"));
    EXPECT_EQ(testing::readFile(file), "[{");

    Outcome reset = brevant("differ --reset");
    EXPECT_EQ(reset.status, 0) << reset.err;
    EXPECT_THAT(reset.out, HasSubstr("not-duplicates.json.damaged-"));
    EXPECT_EQ(brevant(fmt::format("differ '{}' '{}'", a, b)).status, 0);
}

} // namespace
} // namespace brevant::cli
