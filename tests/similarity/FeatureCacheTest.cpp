#include "engine/similarity/FeatureCache.hpp"

#include "tests/fixtures/TempTree.hpp"

#include "engine/platform/BinaryPlist.hpp"
#include "engine/platform/FeaturePrint.hpp"
#include "engine/similarity/FaceCheck.hpp"
#include "engine/similarity/QualityScore.hpp"
#include "engine/support/AtomicFile.hpp"
#include "engine/support/ParallelMap.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals; the check cannot
// see through GoogleTest's macros.

using testing::TempTree;

struct NeverCancelled {
    [[nodiscard]] bool isCancelled() const { return false; }
};

PhotoAsset assetWith(std::uint64_t inode, std::int64_t nanoseconds = 0) {
    PhotoAsset asset;
    asset.path = "/photos/" + std::to_string(inode) + ".jpg";
    asset.snapshot.identity = {2049, inode};
    asset.snapshot.size = 1000 + static_cast<std::int64_t>(inode);
    asset.snapshot.modifiedSeconds = 1699999999;
    asset.snapshot.modifiedNanoseconds = nanoseconds;
    return asset;
}

ImageFeatures measured(std::uint64_t seed) {
    ImageFeatures features;
    features.hashes = {seed, ~seed, 0x8000000000000000ULL, ~0ULL};
    features.detailHashes = {DetailHash{seed, 1, 2, ~0ULL}, DetailHash{}, DetailHash{3, 4, 5, 6},
                             DetailHash{~seed, 0, 0, 0}};
    features.sharpness = 0.012345678901234567;
    features.meanLuma = 0.1 + static_cast<double>(seed) / 1000;
    features.clipped = 1.0 / 3.0;
    features.captureDate = Date{712345678.123456789};
    features.pixelWidth = 4032;
    features.pixelHeight = 3024;
    return features;
}

std::string cachePath(const TempTree& tree) {
    return tree.path("support/features.plist");
}

TEST(FeatureCache, KeyIsPlainDecimal) {
    FileSnapshot snapshot;
    snapshot.identity = {16777220, 8812345};
    snapshot.size = 2048311;
    snapshot.modifiedSeconds = 1699999999;
    snapshot.modifiedNanoseconds = 123456789;
    EXPECT_EQ(FeatureCache::key(snapshot), "16777220:8812345:2048311:1699999999.123456789");
    // Nanoseconds are a number of their own, not a zero-padded fraction.
    snapshot.modifiedNanoseconds = 5;
    EXPECT_EQ(FeatureCache::key(snapshot), "16777220:8812345:2048311:1699999999.5");
    snapshot.modifiedNanoseconds = 0;
    EXPECT_EQ(FeatureCache::key(snapshot), "16777220:8812345:2048311:1699999999.0");
}

TEST(FeatureCache, RecordsSurviveTheFile) {
    TempTree tree;
    ImageFeatures full = measured(7);
    full.featurePrint = std::vector<std::uint8_t>{1, 2, 3, 0, 255};
    full.featurePrintRevision = platform::FeaturePrint::kCurrentRevision;
    full.qualityScore = 73;
    full.isUtility = false;
    full.qualityRevision = QualityScore::kRevision;
    full.faces = FaceReading{3, 1, 2, FaceCheck::kRevision};
    ImageFeatures bare = measured(8);
    bare.captureDate.reset();
    {
        FeatureCache cache(cachePath(tree));
        EXPECT_EQ(cache.count(), 0U);
        cache.store(assetWith(1), full);
        cache.store(assetWith(2), bare);
        cache.save();
    }
    FeatureCache reloaded(cachePath(tree));
    EXPECT_EQ(reloaded.count(), 2U);
    EXPECT_EQ(reloaded.lookup(assetWith(1)), full);
    EXPECT_EQ(reloaded.lookup(assetWith(2)), bare);
    EXPECT_EQ(reloaded.faces(assetWith(1)), full.faces);
    // Only the temporary file's rename leaves anything in the folder.
    std::error_code error;
    auto entries =
        std::distance(std::filesystem::directory_iterator(tree.path("support"), error), {});
    EXPECT_EQ(entries, 1);
}

TEST(FeatureCache, ATouchedFileIsNotFound) {
    FeatureCache cache(std::nullopt);
    cache.store(assetWith(1, 100), measured(1));
    EXPECT_TRUE(cache.lookup(assetWith(1, 100)));
    EXPECT_FALSE(cache.lookup(assetWith(1, 101)));
    EXPECT_FALSE(cache.lookup(assetWith(2, 100)));
}

TEST(FeatureCache, StaleRevisionsAreNotReturned) {
    FeatureCache cache(std::nullopt);
    auto storeAs = [&](std::uint64_t inode, auto change) {
        ImageFeatures features = measured(inode);
        change(features);
        cache.store(assetWith(inode), features);
        return cache.lookup(assetWith(inode)).has_value();
    };
    EXPECT_FALSE(storeAs(1, [](ImageFeatures& f) { f.version = 2; }));
    // Measured before mirrors were: four turns only, measured again.
    EXPECT_FALSE(storeAs(11, [](ImageFeatures& f) {
        f.version = 3;
        f.hashes.resize(4);
        f.detailHashes.resize(4);
    }));
    EXPECT_FALSE(storeAs(2, [](ImageFeatures& f) {
        f.featurePrint = std::vector<std::uint8_t>{9};
        f.featurePrintRevision = platform::FeaturePrint::kCurrentRevision + 1;
    }));
    EXPECT_TRUE(storeAs(3, [](ImageFeatures& f) {
        f.featurePrint = std::vector<std::uint8_t>{9};
        f.featurePrintRevision = platform::FeaturePrint::kCurrentRevision;
    }));
    // Without a print its revision does not matter.
    EXPECT_TRUE(storeAs(4, [](ImageFeatures& f) { f.featurePrintRevision = 99; }));
    EXPECT_FALSE(storeAs(5, [](ImageFeatures& f) {
        f.qualityScore = 50;
        f.isUtility = true;
        f.qualityRevision = QualityScore::kRevision + 1;
    }));
    EXPECT_FALSE(storeAs(6, [](ImageFeatures& f) {
        f.qualityScore = 50;
        f.isUtility = true;
    }));
    EXPECT_TRUE(storeAs(7, [](ImageFeatures& f) {
        f.qualityScore = 50;
        f.isUtility = false;
        f.qualityRevision = QualityScore::kRevision;
    }));
    EXPECT_EQ(cache.count(), 8U);
}

TEST(FeatureCache, FacesOfAnotherRevisionAreCleared) {
    FeatureCache cache(std::nullopt);
    ImageFeatures features = measured(1);
    features.faces = FaceReading{2, 1, 0, FaceCheck::kRevision + 1};
    cache.store(assetWith(1), features);
    auto found = cache.lookup(assetWith(1));
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->faces);
    EXPECT_EQ(found->hashes, features.hashes);
    EXPECT_FALSE(cache.faces(assetWith(1)));

    FaceReading current{2, 0, 1, FaceCheck::kRevision};
    cache.storeFaces(assetWith(1), current);
    EXPECT_EQ(cache.faces(assetWith(1)), current);
    EXPECT_EQ(cache.lookup(assetWith(1))->faces, current);
    // Nothing to attach a reading to without a record.
    cache.storeFaces(assetWith(9), current);
    EXPECT_FALSE(cache.faces(assetWith(9)));
    EXPECT_EQ(cache.count(), 1U);
}

TEST(FeatureCache, SavesOnlyWhenSomethingChanged) {
    TempTree tree;
    std::string path = cachePath(tree);
    FeatureCache cache(path);
    cache.save();
    EXPECT_FALSE(std::filesystem::exists(path));
    cache.store(assetWith(1), measured(1));
    cache.save();
    ASSERT_TRUE(std::filesystem::exists(path));

    // A save with nothing new leaves the file alone.
    tree.file("support/features.plist", "left alone");
    cache.save();
    EXPECT_EQ(testing::readFile(path), "left alone");
    cache.storeFaces(assetWith(1), FaceReading{1, 0, 0, FaceCheck::kRevision});
    cache.save();
    EXPECT_EQ(FeatureCache(path).count(), 1U);
}

TEST(FeatureCache, AMissingOrDamagedFileGivesAnEmptyCache) {
    TempTree tree;
    EXPECT_EQ(FeatureCache(tree.path("none/features.plist")).count(), 0U);
    EXPECT_EQ(FeatureCache(tree.file("text.plist", "not a property list")).count(), 0U);
    EXPECT_EQ(FeatureCache(tree.folder("folder.plist")).count(), 0U);

    std::string good = cachePath(tree);
    {
        FeatureCache cache(good);
        for (std::uint64_t inode = 1; inode <= 20; ++inode) {
            cache.store(assetWith(inode), measured(inode));
        }
        cache.save();
    }
    std::string bytes = testing::readFile(good);
    for (std::size_t cut : {std::size_t{8}, bytes.size() / 2, bytes.size() - 1}) {
        EXPECT_EQ(FeatureCache(tree.file("cut.plist", bytes.substr(0, cut))).count(), 0U) << cut;
    }
    std::string flipped = bytes;
    for (std::size_t i = 8; i < flipped.size(); i += 7) {
        flipped[i] = static_cast<char>(flipped[i] ^ 0x5A);
    }
    // Whatever survives the damage, loading it must not crash.
    EXPECT_LE(FeatureCache(tree.file("flipped.plist", flipped)).count(), 20U);

    // An array at the top, or records with missing fields, are not records.
    auto write = [&](const std::string& name, const PlistValue& value) {
        auto encoded = platform::BinaryPlist::encode(value);
        EXPECT_TRUE(encoded && AtomicFile::write(tree.path(name), *encoded));
        return tree.path(name);
    };
    EXPECT_EQ(FeatureCache(write("array.plist", PlistValue::Array{toPlist(measured(1))})).count(),
              0U);
    PlistValue::Dictionary mixed = {
        {FeatureCache::key(assetWith(1).snapshot), toPlist(measured(1))},
        {FeatureCache::key(assetWith(2).snapshot), PlistValue::Dictionary{{"hashes", 1}}}};
    FeatureCache partial(write("mixed.plist", mixed));
    EXPECT_EQ(partial.count(), 1U);
    EXPECT_EQ(partial.lookup(assetWith(1)), measured(1));
}

TEST(FeatureCache, WorkersStoreAndLookUpTogether) {
    TempTree tree;
    FeatureCache cache(cachePath(tree));
    std::vector<std::uint64_t> inodes(400);
    for (std::size_t i = 0; i < inodes.size(); ++i) {
        inodes[i] = i + 1;
    }
    auto found = parallelMap(inodes, NeverCancelled{}, [&](std::uint64_t inode) {
        cache.store(assetWith(inode), measured(inode));
        if (inode % 50 == 0) {
            cache.save();
        }
        return cache.lookup(assetWith(inode)).has_value();
    });
    EXPECT_TRUE(std::ranges::all_of(found, [](const auto& slot) { return slot && *slot; }));
    cache.save();
    EXPECT_EQ(FeatureCache(cachePath(tree)).count(), 400U);
}

} // namespace
} // namespace brevant
