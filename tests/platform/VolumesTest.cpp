#include "engine/platform/Volumes.hpp"

#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

namespace brevant::platform {
namespace {

// The root file system and a card under /media on another device.
constexpr std::string_view kMountInfo =
    "22 1 254:1 / / rw,relatime shared:1 - ext4 /dev/nonexistent-root rw\n"
    "31 22 8:17 / /media/anna/My\\040Card ro,nosuid - exfat /dev/nonexistent-card rw\n"
    "32 22 254:1 /home /mnt/bind rw - ext4 /dev/nonexistent-root rw\n";

TEST(Volumes, NamesTheVolumeAndTellsAnExternalOne) {
    auto mounts = MountTable::parse(kMountInfo);

    VolumeInfo card = volumeInfo("/media/anna/My Card/DCIM/1.jpg", mounts);
    EXPECT_EQ(card.name, "My Card");
    EXPECT_TRUE(card.isExternal);

    VolumeInfo root = volumeInfo("/home/anna/1.jpg", mounts);
    EXPECT_EQ(root.name, std::nullopt);
    EXPECT_FALSE(root.isExternal);

    // A folder of the root file system mounted again under /mnt is still
    // the start-up disk.
    EXPECT_FALSE(volumeInfo("/mnt/bind/anna/1.jpg", mounts).isExternal);
}

TEST(Volumes, ATemporaryFolderIsWritableAndInternal) {
    testing::TempTree tree;
    std::string photo = tree.file("a.jpg", "x");
    VolumeInfo info = volumeInfo(photo, MountTable::load());
    EXPECT_FALSE(info.isReadOnly);
    EXPECT_FALSE(info.isExternal);
}

} // namespace
} // namespace brevant::platform
