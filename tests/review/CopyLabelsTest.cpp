#include "engine/review/CopyLabels.hpp"

#include <gtest/gtest.h>

#include <string>

namespace brevant {
namespace {

PhotoAsset copyAt(const std::string& path, const std::string& root) {
    PhotoAsset asset;
    asset.path = path;
    asset.root = root;
    return asset;
}

TEST(CopyLabels, FolderIsShownFromTheChosenRoot) {
    struct Case {
        std::string path;
        std::string root;
        std::string shown;
    };

    const Case cases[] = {
        {"/home/ann/Pictures/Backup/2018/IMG_1.JPG", "/home/ann/Pictures", "Pictures/Backup/2018"},
        {"/home/ann/Pictures/IMG_1.JPG", "/home/ann/Pictures", "Pictures"},
        // A root that only begins like the folder is not its root.
        {"/home/ann/Pictures2/IMG_1.JPG", "/home/ann/Pictures", "/home/ann/Pictures2"},
        {"/media/card/DCIM/IMG_1.JPG", "/", "/media/card/DCIM"},
        {"/media/card/DCIM/IMG_1.JPG", "", "/media/card/DCIM"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CopyLabels::folderInRoot(copyAt(c.path, c.root)), c.shown) << c.path;
    }
}

TEST(CopyLabels, ANameSharedInTheGroupIsFollowedByItsFolder) {
    DuplicateGroup group;
    group.members = {copyAt("/p/Lib/Holiday/IMG_1003.JPG", "/p/Lib"),
                     copyAt("/p/Lib/Backup/IMG_1003.JPG", "/p/Lib"),
                     copyAt("/p/Lib/Backup/IMG_1003 copy.JPG", "/p/Lib")};
    EXPECT_EQ(CopyLabels::distinctName(group.members[0], group), "IMG_1003.JPG in Lib/Holiday");
    EXPECT_EQ(CopyLabels::distinctName(group.members[1], group), "IMG_1003.JPG in Lib/Backup");
    EXPECT_EQ(CopyLabels::distinctName(group.members[2], group), "IMG_1003 copy.JPG");
}

} // namespace
} // namespace brevant
