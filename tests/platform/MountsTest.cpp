#include "engine/platform/Mounts.hpp"

#include <gtest/gtest.h>

namespace brevant::platform {
namespace {

constexpr std::string_view kMountInfo =
    "22 1 254:1 / / rw,relatime shared:1 - ext4 /dev/vda1 rw\n"
    "30 22 0:40 / /mnt/nas rw,relatime shared:5 - nfs4 nas:/photos rw,vers=4.2\n"
    "31 22 8:17 / /media/anna/My\\040Card rw,nosuid - exfat /dev/sdb1 rw\n"
    "32 22 0:50 / /home/anna/remote rw - fuse.sshfs anna@host:/ rw\n"
    "33 22 8:33 / /mnt/nas rw - ext4 /dev/sdc1 rw\n"
    "garbage line\n";

TEST(Mounts, ParsesMountInfoAndFindsTheHoldingMount) {
    auto table = MountTable::parse(kMountInfo);
    ASSERT_EQ(table.entries().size(), 5u);
    const auto* card = table.mountFor("/media/anna/My Card/DCIM/1.jpg");
    ASSERT_NE(card, nullptr);
    EXPECT_EQ(card->mountPoint, "/media/anna/My Card");
    EXPECT_EQ(card->fileSystemType, "exfat");
    EXPECT_EQ(card->major, 8u);
    EXPECT_EQ(card->minor, 17u);
    EXPECT_EQ(table.mountFor("/home/anna/Pictures")->mountPoint, "/");
    EXPECT_EQ(table.mountFor("/home/anna/remote/x")->fileSystemType, "fuse.sshfs");
    EXPECT_EQ(table.mountFor("/mnt/nasty")->mountPoint, "/");
    // A later mount on the same point hides the earlier one.
    EXPECT_EQ(table.mountFor("/mnt/nas/2020")->fileSystemType, "ext4");
}

TEST(Mounts, NetworkFileSystems) {
    for (std::string_view type :
         {"nfs", "nfs4", "cifs", "smb3", "9p", "fuse.sshfs", "fuse.rclone"}) {
        EXPECT_TRUE(isNetworkFileSystem(type)) << type;
    }
    for (std::string_view type : {"ext4", "btrfs", "xfs", "exfat", "vfat", "tmpfs", "overlay"}) {
        EXPECT_FALSE(isNetworkFileSystem(type)) << type;
    }
    EXPECT_FALSE(isOnNetworkVolume("/tmp"));
}

} // namespace
} // namespace brevant::platform
