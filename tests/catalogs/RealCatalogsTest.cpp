#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/catalogs/LightroomScanner.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Catalogs written by Lightroom itself, read in the shared test data where
// it is present (the folder is read-only, so nothing could be written there
// even by mistake; the digests show nothing was).

TEST(RealCatalogs, LightroomFiveReadsWithItsPhotosMissingHere) {
    auto path = testing::sampleFile("catalogs/lightroom/test_catalog_1.lrcat");
    if (!path) {
        GTEST_SKIP() << "shared test data not present";
    }
    std::string digest = testing::fileDigest(*path);

    auto catalog = LightroomCatalog::read(*path);

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    EXPECT_EQ(catalog->schemaVersion, "0500006");
    EXPECT_FALSE(catalog->isTestedVersion());
    ASSERT_EQ(catalog->photos.size(), 4u);
    EXPECT_EQ(catalog->missing().size(), 4u);
    for (const auto& photo : catalog->photos) {
        EXPECT_THAT(photo.path, ::testing::StartsWith("/Users/maxmouchet/")) << photo.path;
        EXPECT_EQ(photo.ref.pick, 0);
    }
    CancellationFlag cancel;
    ScanResult result = LightroomScanner::scan(*catalog, false, cancel, nullptr);
    EXPECT_THAT(result.groups, IsEmpty());
    EXPECT_EQ(result.skipped.size(), 4u);
    EXPECT_THAT(result.excluded, IsEmpty());
    EXPECT_EQ(testing::fileDigest(*path), digest);
}

TEST(RealCatalogs, LightroomClassicFifteenFindsItsPhotosBesideIt) {
    auto path =
        testing::sampleFile("pixelpast/catalog/lightroom-classic-catalog-test-fixture.lrcat");
    if (!path) {
        GTEST_SKIP() << "shared test data not present";
    }
    std::string digest = testing::fileDigest(*path);
    std::error_code error;
    std::string folder =
        std::filesystem::canonical(std::filesystem::path(*path).parent_path().parent_path(), error)
            .string();

    auto catalog = LightroomCatalog::read(*path);

    ASSERT_TRUE(catalog.has_value()) << catalog.error().text();
    EXPECT_EQ(catalog->schemaVersion, "1500000");
    ASSERT_EQ(catalog->photos.size(), 3u);
    std::vector<std::string> paths;
    std::vector<int> ratings;
    std::vector<std::string> labels;
    for (const auto& photo : catalog->photos) {
        EXPECT_TRUE(photo.exists) << photo.path;
        paths.push_back(photo.path);
        ratings.push_back(photo.ref.rating);
        labels.push_back(photo.ref.colorLabel);
    }
    EXPECT_THAT(paths, ElementsAre(folder + "/monalisa-1.jpg", folder + "/monalisa-2.jpg",
                                   folder + "/monalisa-3.jpg"));
    EXPECT_THAT(ratings, ElementsAre(3, 4, 5));
    EXPECT_THAT(labels, ElementsAre("Rot", "Gelb", "Grün"));
    EXPECT_THAT(catalog->rootFolders, ElementsAre(folder));
    EXPECT_THAT(catalog->missing(), IsEmpty());

    CancellationFlag cancel;
    ScanResult result = LightroomScanner::scan(*catalog, true, cancel, nullptr);

    // The same picture saved with different metadata: different bytes.
    EXPECT_THAT(result.groups, IsEmpty());
    EXPECT_EQ(result.examined, 3);
    ASSERT_EQ(result.pictures.size(), 3u);
    for (const auto& picture : result.pictures) {
        ASSERT_TRUE(picture.catalog.hasValue()) << picture.path;
    }
    EXPECT_THAT(result.skipped, IsEmpty());
    EXPECT_EQ(testing::fileDigest(*path), digest);
}

} // namespace
} // namespace brevant
