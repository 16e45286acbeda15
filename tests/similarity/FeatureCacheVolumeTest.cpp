#include "tests/fixtures/TempTree.hpp"

#include "engine/platform/BinaryPlist.hpp"
#include "engine/similarity/FeatureCache.hpp"
#include "engine/support/AtomicFile.hpp"

#include <gtest/gtest.h>

#include <fmt/format.h>
#include <map>
#include <memory>
#include <string>
#include <sys/sysmacros.h>

namespace brevant {
namespace {

using platform::MountedVolumeIds;
using platform::MountTable;
using testing::TempTree;

constexpr std::string_view kUuid = "3f1c2b7a-55aa-4c1e-9d0e-0123456789ab";

// This computer with the drive DISK plugged in at `mountPoint` as block
// device major:minor.
std::shared_ptr<const platform::VolumeIds> drivePluggedAt(std::string_view mountPoint,
                                                          unsigned minor) {
    auto mounts = MountTable::parse(fmt::format("22 1 254:1 / / rw - ext4 /dev/vda1 rw\n"
                                                "40 22 8:{} / {} rw,nosuid - exfat /dev/sdb1 rw\n",
                                                minor, mountPoint));
    std::map<std::uint64_t, std::string> uuids{{::makedev(8, minor), std::string(kUuid)}};
    return std::make_shared<const MountedVolumeIds>(std::move(mounts), std::move(uuids));
}

PhotoAsset onDrive(std::string_view mountPoint, unsigned minor, std::uint64_t inode) {
    PhotoAsset asset;
    asset.path = std::string(mountPoint) + "/DCIM/x.jpg";
    asset.snapshot.identity = {::makedev(8, minor), inode};
    asset.snapshot.size = 4'000'000;
    asset.snapshot.modifiedSeconds = 1'699'999'999;
    asset.snapshot.modifiedNanoseconds = 250;
    return asset;
}

ImageFeatures measured() {
    ImageFeatures features;
    features.hashes = {1, 2, 3, 4};
    features.pixelWidth = 4032;
    features.pixelHeight = 3024;
    return features;
}

TEST(FeatureCacheVolumes, ADriveBackAtAnotherMountPointIsNotMeasuredAgain) {
    TempTree tree;
    std::string file = tree.path("support/features.plist");
    {
        FeatureCache cache(file, drivePluggedAt("/media/a/DISK", 17));
        cache.store(onDrive("/media/a/DISK", 17, 12), measured());
        cache.save();
    }
    // Plugged in again: another mount point, another device number.
    FeatureCache cache(file, drivePluggedAt("/media/b/DISK", 33));
    EXPECT_EQ(cache.lookup(onDrive("/media/b/DISK", 33, 12)), measured());

    // Another size or time is another version of the picture.
    PhotoAsset edited = onDrive("/media/b/DISK", 33, 12);
    edited.snapshot.modifiedNanoseconds = 251;
    EXPECT_EQ(cache.lookup(edited), std::nullopt);
    // Another file system at the same mount point is another drive.
    FeatureCache elsewhere(
        file, std::make_shared<const MountedVolumeIds>(
                  MountTable::parse("40 1 8:49 / /media/b/DISK rw - exfat "
                                    "/dev/sdd1 rw\n"),
                  std::map<std::uint64_t, std::string>{{::makedev(8, 49), "0000-1111"}}));
    EXPECT_EQ(elsewhere.lookup(onDrive("/media/b/DISK", 49, 12)), std::nullopt);
}

TEST(FeatureCacheVolumes, EntriesWrittenByIdentityAreStillFound) {
    TempTree tree;
    std::string file = tree.path("support/features.plist");
    PhotoAsset asset = onDrive("/media/a/DISK", 17, 12);
    // A file as it was written before file systems were known by UUID.
    PlistValue::Dictionary old{{FeatureCache::key(asset.snapshot), toPlist(measured())}};
    auto bytes = platform::BinaryPlist::encode(PlistValue(std::move(old)));
    ASSERT_TRUE(bytes && AtomicFile::write(file, *bytes));

    FeatureCache cache(file, drivePluggedAt("/media/a/DISK", 17));
    EXPECT_EQ(cache.count(), 1U);
    EXPECT_EQ(cache.lookup(asset), measured());
    cache.storeFaces(asset, FaceReading{});
    EXPECT_EQ(cache.count(), 1U);
}

TEST(FeatureCacheVolumes, KeysNameTheFileSystemAndThePathInsideIt) {
    auto volumes = drivePluggedAt("/media/a/DISK", 17);
    auto place = volumes->place("/media/a/DISK/DCIM/x.jpg", ::makedev(8, 17));
    ASSERT_TRUE(place.has_value());
    EXPECT_EQ(place->uuid, kUuid);
    EXPECT_EQ(place->pathInside, "/DCIM/x.jpg");
    EXPECT_EQ(FeatureCache::key(*place, onDrive("/media/a/DISK", 17, 12).snapshot),
              fmt::format("uuid:{}:4000000:1699999999.250:/DCIM/x.jpg", kUuid));
    // A device without a UUID, or a path on another mount, has no place.
    EXPECT_EQ(volumes->place("/media/a/DISK/DCIM/x.jpg", ::makedev(8, 18)), std::nullopt);
    EXPECT_EQ(volumes->place("/home/x.jpg", ::makedev(8, 17)), std::nullopt);

    // A bind mount shows a folder of the file system: the path inside
    // begins there.
    MountedVolumeIds bound(MountTable::parse("50 1 8:17 /Photos /srv/photos rw - ext4 "
                                             "/dev/sdb1 rw\n"),
                           {{::makedev(8, 17), "abcd"}});
    EXPECT_EQ(bound.place("/srv/photos/2020/y.jpg", ::makedev(8, 17)),
              (platform::VolumePlace{.uuid = "abcd", .pathInside = "/Photos/2020/y.jpg"}));
}

} // namespace
} // namespace brevant
