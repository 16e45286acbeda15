#include "engine/platform/FreedesktopTrash.hpp"

#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/ScopedTimeZone.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/platform/ExclusiveRename.hpp"
#include "engine/platform/FolderListing.hpp"
#include "engine/support/PathText.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>
#include <sys/stat.h>
#include <unistd.h>

namespace brevant::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ScopedEnvironment;
using testing::ScopedTimeZone;
using testing::TempTree;

bool exists(const std::string& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0;
}

mode_t permissions(const std::string& path) {
    struct stat status{};
    ::lstat(path.c_str(), &status);
    return status.st_mode & 07777;
}

// A home Trash inside the test's own folder.
class HomeTrashTest : public ::testing::Test {
protected:
    TempTree tree;
    ScopedEnvironment dataHome{"XDG_DATA_HOME", tree.path("data")};
    std::string trashFolder = tree.path("data/Trash");

    [[nodiscard]] std::string record(const std::string& name) const {
        return testing::readFile(trashFolder + "/info/" + name + ".trashinfo");
    }

    [[nodiscard]] std::vector<std::string> infoEntries() const {
        return folderEntries(trashFolder + "/info").value_or(std::vector<std::string>{});
    }
};

TEST(FreedesktopTrash, EncodesThePathForTheRecord) {
    EXPECT_EQ(FreedesktopTrash::encodedPath("/home/anna/My Photos/100% sure #1.jpg"),
              "/home/anna/My%20Photos/100%25%20sure%20%231.jpg");
    // Unreserved characters and "/" stay; everything else is escaped,
    // including UTF-8 sequences and bytes that are not UTF-8.
    EXPECT_EQ(FreedesktopTrash::encodedPath("/a-z_A.Z~0!9*'()"), "/a-z_A.Z~0!9*'()");
    EXPECT_EQ(FreedesktopTrash::encodedPath("/?&=+,;:@$[]\n\\"),
              "/%3F%26%3D%2B%2C%3B%3A%40%24%5B%5D%0A%5C");
    EXPECT_EQ(FreedesktopTrash::encodedPath("/Fotos/Bj\xc3\xb6rk/\xff\xfe.jpg"),
              "/Fotos/Bj%C3%B6rk/%FF%FE.jpg");
}

TEST(FreedesktopTrash, WritesTheRecordInLocalTime) {
    constexpr std::time_t kMoment = 1709622489; // 2024-03-05 07:08:09 UTC
    {
        ScopedTimeZone utc("UTC");
        EXPECT_EQ(FreedesktopTrash::trashInfo("/p/a b.jpg", kMoment),
                  "[Trash Info]\nPath=/p/a%20b.jpg\nDeletionDate=2024-03-05T07:08:09\n");
    }
    ScopedTimeZone tokyo("Asia/Tokyo");
    EXPECT_EQ(FreedesktopTrash::trashInfo("/p/x.jpg", kMoment),
              "[Trash Info]\nPath=/p/x.jpg\nDeletionDate=2024-03-05T16:08:09\n");
}

TEST(FreedesktopTrash, NamesForClashesKeepTheExtension) {
    EXPECT_EQ(FreedesktopTrash::candidateName("IMG_1.jpg", 1), "IMG_1.jpg");
    EXPECT_EQ(FreedesktopTrash::candidateName("IMG_1.jpg", 2), "IMG_1.2.jpg");
    EXPECT_EQ(FreedesktopTrash::candidateName("IMG_1.jpg", 13), "IMG_1.13.jpg");
    EXPECT_EQ(FreedesktopTrash::candidateName("archive.tar.gz", 2), "archive.tar.2.gz");
    EXPECT_EQ(FreedesktopTrash::candidateName("README", 3), "README.3");
    EXPECT_EQ(FreedesktopTrash::candidateName(".hidden", 2), ".hidden.2");
    std::string notAnExtension = "a." + std::string(40, 'x');
    EXPECT_EQ(FreedesktopTrash::candidateName(notAnExtension, 2), notAnExtension + ".2");

    // The record's name, NAME.trashinfo, must fit in 255 bytes: the name is
    // shortened before the number and never inside a UTF-8 character.
    std::string longName;
    for (int i = 0; i < 120; ++i) {
        longName += "\xc3\xa9";
    }
    longName += ".jpg";
    ASSERT_EQ(longName.size(), 244u);
    EXPECT_EQ(FreedesktopTrash::candidateName(longName, 1), longName);
    std::string second = FreedesktopTrash::candidateName(longName, 2);
    EXPECT_EQ(second, longName.substr(0, 238) + ".2.jpg");
    EXPECT_TRUE(path_text::isValidUtf8(second));
    EXPECT_LE(second.size() + 10, 255u);
}

TEST(FreedesktopTrash, FindsTheRecordOfATrashedItem) {
    EXPECT_EQ(FreedesktopTrash::infoPathFor("/d/Trash/files/a b.jpg"),
              "/d/Trash/info/a b.jpg.trashinfo");
    EXPECT_EQ(FreedesktopTrash::infoPathFor("/v/.Trash-1000/files/x"),
              "/v/.Trash-1000/info/x.trashinfo");
    EXPECT_EQ(FreedesktopTrash::infoPathFor("/d/Trash/other/a.jpg"), std::nullopt);
    EXPECT_EQ(FreedesktopTrash::infoPathFor("/d/Trash/files/"), std::nullopt);
}

TEST_F(HomeTrashTest, MovesIntoFilesWithAMatchingRecord) {
    std::string photo = tree.file("Pictures/Summer 100%/Bj\xc3\xb6rk \xff.jpg", "jpeg bytes");
    std::time_t before = std::time(nullptr);
    auto moved = FreedesktopTrash::moveToTrash(photo);
    std::time_t after = std::time(nullptr);

    ASSERT_TRUE(moved.has_value()) << moved.error();
    EXPECT_EQ(*moved, trashFolder + "/files/Bj\xc3\xb6rk \xff.jpg");
    EXPECT_FALSE(exists(photo));
    EXPECT_EQ(testing::readFile(*moved), "jpeg bytes");
    EXPECT_EQ(permissions(trashFolder), 0700u);
    EXPECT_EQ(permissions(trashFolder + "/files"), 0700u);
    EXPECT_EQ(permissions(trashFolder + "/info"), 0700u);

    std::string text = record("Bj\xc3\xb6rk \xff.jpg");
    std::string expectedStart =
        "[Trash Info]\nPath=" + tree.root() + "/Pictures/Summer%20100%25/Bj%C3%B6rk%20%FF.jpg\n";
    ASSERT_TRUE(text.starts_with(expectedStart)) << text;
    std::string dateLine = text.substr(expectedStart.size());
    EXPECT_THAT(dateLine,
                ::testing::MatchesRegex(
                    "DeletionDate=[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\n"));
    std::tm local{};
    ASSERT_NE(::strptime(dateLine.c_str(), "DeletionDate=%Y-%m-%dT%H:%M:%S", &local), nullptr);
    local.tm_isdst = -1;
    std::time_t written = std::mktime(&local);
    EXPECT_GE(written, before);
    EXPECT_LE(written, after);
    EXPECT_EQ(permissions(trashFolder + "/info/Bj\xc3\xb6rk \xff.jpg.trashinfo"), 0600u);
}

TEST_F(HomeTrashTest, ClashesGetNewNamesAndLeaveEarlierItemsAlone) {
    std::string first = tree.file("a/IMG_1.jpg", "first");
    std::string second = tree.file("b/IMG_1.jpg", "second");
    std::string third = tree.file("c/IMG_1.jpg", "third");
    auto firstMoved = FreedesktopTrash::moveToTrash(first);
    auto secondMoved = FreedesktopTrash::moveToTrash(second);
    auto thirdMoved = FreedesktopTrash::moveToTrash(third);
    ASSERT_TRUE(firstMoved && secondMoved && thirdMoved);
    EXPECT_EQ(*firstMoved, trashFolder + "/files/IMG_1.jpg");
    EXPECT_EQ(*secondMoved, trashFolder + "/files/IMG_1.2.jpg");
    EXPECT_EQ(*thirdMoved, trashFolder + "/files/IMG_1.3.jpg");
    EXPECT_EQ(testing::readFile(*firstMoved), "first");
    EXPECT_EQ(testing::readFile(*secondMoved), "second");
    EXPECT_EQ(testing::readFile(*thirdMoved), "third");
    EXPECT_THAT(record("IMG_1.jpg"), ::testing::HasSubstr("/a/IMG_1.jpg\n"));
    EXPECT_THAT(record("IMG_1.2.jpg"), ::testing::HasSubstr("/b/IMG_1.jpg\n"));
    EXPECT_THAT(record("IMG_1.3.jpg"), ::testing::HasSubstr("/c/IMG_1.jpg\n"));

    // A record without its item, or an item without its record, also takes
    // the name; neither is touched.
    tree.file("data/Trash/info/IMG_2.jpg.trashinfo", "someone else's record");
    tree.file("data/Trash/files/IMG_3.jpg", "someone else's item");
    auto fourth = FreedesktopTrash::moveToTrash(tree.file("IMG_2.jpg", "fourth"));
    auto fifth = FreedesktopTrash::moveToTrash(tree.file("IMG_3.jpg", "fifth"));
    ASSERT_TRUE(fourth && fifth);
    EXPECT_EQ(*fourth, trashFolder + "/files/IMG_2.2.jpg");
    EXPECT_EQ(*fifth, trashFolder + "/files/IMG_3.2.jpg");
    EXPECT_EQ(record("IMG_2.jpg"), "someone else's record");
    EXPECT_EQ(testing::readFile(trashFolder + "/files/IMG_3.jpg"), "someone else's item");
    EXPECT_THAT(infoEntries(), ElementsAre("IMG_1.2.jpg.trashinfo", "IMG_1.3.jpg.trashinfo",
                                           "IMG_1.jpg.trashinfo", "IMG_2.2.jpg.trashinfo",
                                           "IMG_2.jpg.trashinfo", "IMG_3.2.jpg.trashinfo"));
}

TEST_F(HomeTrashTest, ALongNameIsShortenedButTheRecordKeepsTheWholePath) {
    std::string name = std::string(247, 'x') + ".jpg";
    std::string photo = tree.file(name, "long");
    auto moved = FreedesktopTrash::moveToTrash(photo);
    ASSERT_TRUE(moved.has_value()) << moved.error();
    EXPECT_EQ(*moved, trashFolder + "/files/" + std::string(241, 'x') + ".jpg");
    EXPECT_EQ(testing::readFile(*moved), "long");
    EXPECT_THAT(record(std::string(241, 'x') + ".jpg"),
                ::testing::HasSubstr("Path=" + tree.root() + "/" + name + "\n"));
}

TEST_F(HomeTrashTest, MovesALinkItselfNeverItsTarget) {
    std::string target = tree.file("real.jpg", "target");
    std::string link = tree.symbolicLink(target, "alias.jpg");
    auto moved = FreedesktopTrash::moveToTrash(link);
    ASSERT_TRUE(moved.has_value()) << moved.error();
    struct stat status{};
    ASSERT_EQ(::lstat(moved->c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    EXPECT_EQ(testing::readFile(target), "target");
}

TEST_F(HomeTrashTest, RefusalsChangeNothing) {
    EXPECT_EQ(FreedesktopTrash::moveToTrash(tree.path("missing.jpg")).error(), ENOENT);
    EXPECT_EQ(FreedesktopTrash::moveToTrash("relative/photo.jpg").error(), EINVAL);
    std::string folder = tree.folder("Pictures");
    EXPECT_EQ(FreedesktopTrash::moveToTrash(folder + "/").error(), EINVAL);
    EXPECT_THAT(infoEntries(), IsEmpty());

    // An item already in this Trash is not moved into it again.
    auto moved = FreedesktopTrash::moveToTrash(tree.file("Pictures/a.jpg", "a"));
    ASSERT_TRUE(moved.has_value());
    EXPECT_EQ(FreedesktopTrash::moveToTrash(*moved).error(), EINVAL);
    EXPECT_EQ(testing::readFile(*moved), "a");
    EXPECT_THAT(infoEntries(), ElementsAre("a.jpg.trashinfo"));
}

TEST_F(HomeTrashTest, AFolderThatCannotBeChangedKeepsItsPicture) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root ignores folder permissions";
    }
    std::string photo = tree.file("Locked/a.jpg", "keep me");
    ASSERT_EQ(::chmod(tree.path("Locked").c_str(), 0555), 0);
    auto moved = FreedesktopTrash::moveToTrash(photo);
    ::chmod(tree.path("Locked").c_str(), 0755);
    ASSERT_FALSE(moved.has_value());
    EXPECT_EQ(moved.error(), EACCES);
    EXPECT_EQ(testing::readFile(photo), "keep me");
    // The record written before the rename was taken back.
    EXPECT_THAT(infoEntries(), IsEmpty());
    EXPECT_THAT(folderEntries(trashFolder + "/files").value_or(std::vector<std::string>{"?"}),
                IsEmpty());
}

TEST_F(HomeTrashTest, PutBackRenamesWithoutReplacingAndDropsTheRecord) {
    std::string photo = tree.file("Pictures/a.jpg", "picture");
    auto moved = FreedesktopTrash::moveToTrash(photo);
    ASSERT_TRUE(moved.has_value());
    std::string recordPath = trashFolder + "/info/a.jpg.trashinfo";

    // While the item is in the Trash its record stays.
    EXPECT_EQ(FreedesktopTrash::removeTrashInfo(*moved).error(), EEXIST);
    EXPECT_TRUE(exists(recordPath));
    EXPECT_EQ(FreedesktopTrash::removeTrashInfo(tree.path("Pictures/b.jpg")).error(), EINVAL);

    // A new file at the old place: occupied, nothing moves.
    tree.file("Pictures/a.jpg", "newcomer");
    EXPECT_EQ(FreedesktopTrash::putBack(*moved, photo).error(), EEXIST);
    EXPECT_EQ(testing::readFile(photo), "newcomer");
    EXPECT_EQ(testing::readFile(*moved), "picture");
    EXPECT_TRUE(exists(recordPath));

    std::string beside = tree.path("Pictures/a (restored).jpg");
    ASSERT_TRUE(FreedesktopTrash::putBack(*moved, beside).has_value());
    EXPECT_EQ(testing::readFile(beside), "picture");
    EXPECT_FALSE(exists(*moved));
    EXPECT_FALSE(exists(recordPath));
    // A second Put Back finds nothing.
    EXPECT_EQ(FreedesktopTrash::putBack(*moved, tree.path("Pictures/c.jpg")).error(), ENOENT);
    EXPECT_EQ(FreedesktopTrash::removeTrashInfo(*moved).error(), ENOENT);
}

TEST(ExclusiveRename, NeverReplaces) {
    TempTree tree;
    std::string from = tree.file("from.jpg", "from");
    std::string taken = tree.file("taken.jpg", "taken");
    std::string dangling = tree.symbolicLink(tree.path("nowhere"), "dangling.jpg");

    auto occupied = renameNoReplace(from, taken);
    ASSERT_FALSE(occupied.has_value());
    EXPECT_EQ(occupied.error(), EEXIST);
    EXPECT_EQ(testing::readFile(from), "from");
    EXPECT_EQ(testing::readFile(taken), "taken");
    // Even a link that leads nowhere is something at the place.
    EXPECT_EQ(renameNoReplace(from, dangling).error(), EEXIST);
    EXPECT_TRUE(exists(dangling));

    ASSERT_TRUE(renameNoReplace(from, tree.path("free.jpg")).has_value());
    EXPECT_EQ(testing::readFile(tree.path("free.jpg")), "from");
    EXPECT_FALSE(exists(from));
    EXPECT_EQ(renameNoReplace(from, tree.path("other.jpg")).error(), ENOENT);
}

TEST(FolderListing, ListsOneLevelInNameOrder) {
    TempTree tree;
    tree.file("b.jpg", "");
    tree.file("a.jpg", "");
    tree.file("sub/c.jpg", "");
    EXPECT_EQ(folderEntries(tree.root()), (std::vector<std::string>{"a.jpg", "b.jpg", "sub"}));
    EXPECT_EQ(folderEntries(tree.path("missing")), std::nullopt);
}

} // namespace
} // namespace brevant::platform
