#include "tests/fixtures/TrashCli.hpp"

#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/cleanup/Trasher.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <sys/stat.h>

namespace brevant {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using testing::ScopedEnvironment;
using testing::TempTree;

bool exists(const std::string& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0;
}

// What trash-list shows as the deletion date, from our record.
std::string recordedDate(const std::string& trashedPath) {
    std::string folder = trashedPath.substr(0, trashedPath.rfind("/files/"));
    std::string name = trashedPath.substr(trashedPath.rfind('/') + 1);
    std::string text = testing::readFile(folder + "/info/" + name + ".trashinfo");
    constexpr std::string_view kKey = "DeletionDate=";
    std::size_t start = text.find(kKey);
    if (start == std::string::npos) {
        return "?";
    }
    // 2024-03-05T07:08:09 is listed as 2024-03-05 07:08:09.
    std::string date = text.substr(start + kKey.size(), 19);
    std::ranges::replace(date, 'T', ' ');
    return date;
}

TEST(TrashCli, ListsAndRestoresWhatWeTrashed) {
    if (auto missing = testing::trashCliMissing()) {
        GTEST_SKIP() << *missing;
    }
    TempTree tree;
    ScopedEnvironment dataHome("XDG_DATA_HOME", tree.path("data"));
    std::string summer = tree.file("Pictures/Summer 100% #1.jpg", "summer");
    std::string first = tree.file("Pictures/a/IMG_1.jpg", "first");
    std::string second = tree.file("Pictures/b/IMG_1.jpg", "second");
    FileManagerTrasher trasher;
    auto summerMoved = trasher.trash(summer);
    auto firstMoved = trasher.trash(first);
    auto secondMoved = trasher.trash(second);
    ASSERT_TRUE(summerMoved && firstMoved && secondMoved);
    ASSERT_EQ(*secondMoved, tree.path("data/Trash/files/IMG_1.2.jpg"));

    std::string listed = testing::trashList();
    EXPECT_THAT(listed, HasSubstr(recordedDate(*summerMoved) + " " + summer + "\n"));
    EXPECT_THAT(listed, HasSubstr(recordedDate(*firstMoved) + " " + first + "\n"));
    EXPECT_THAT(listed, HasSubstr(recordedDate(*secondMoved) + " " + second + "\n"));

    EXPECT_EQ(testing::trashRestoreFirst(second), 0);
    EXPECT_EQ(testing::readFile(second), "second");
    EXPECT_FALSE(exists(*secondMoved));
    EXPECT_FALSE(exists(tree.path("data/Trash/info/IMG_1.2.jpg.trashinfo")));
    EXPECT_EQ(testing::trashRestoreFirst(summer), 0);
    EXPECT_EQ(testing::readFile(summer), "summer");

    listed = testing::trashList();
    EXPECT_THAT(listed, Not(HasSubstr(second)));
    EXPECT_THAT(listed, Not(HasSubstr(summer)));
    EXPECT_THAT(listed, HasSubstr(" " + first + "\n"));
    EXPECT_EQ(testing::readFile(*firstMoved), "first");
}

} // namespace
} // namespace brevant
