#include "engine/similarity/SimilarityMatcher.hpp"

#include "engine/similarity/FeatureExtractor.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <random>
#include <set>

namespace brevant {
namespace {

PhotoAsset picture(const std::string& path) {
    PhotoAsset asset;
    asset.path = path;
    asset.snapshot.size = 1000;
    return asset;
}

ImageFeatures features(std::array<std::uint64_t, 4> turns, int width = 4000, int height = 3000) {
    ImageFeatures f;
    f.hashes = {turns[0], turns[1], turns[2], turns[3]};
    f.detailHashes = {{turns[0], 0, 0, 0}};
    f.pixelWidth = width;
    f.pixelHeight = height;
    return f;
}

ImageFeatures still(std::uint64_t hash, int width = 4000, int height = 3000) {
    return features({hash, hash, hash, hash}, width, height);
}

struct Scene {
    std::vector<PhotoAsset> pictures;
    std::vector<std::optional<ImageFeatures>> features;

    void add(const std::string& path, std::optional<ImageFeatures> f) {
        pictures.push_back(picture(path));
        features.push_back(std::move(f));
    }

    // The hash distance of two measured pictures, 64 if either is not.
    int distance(int a, int b) const {
        const auto& fa = features[a];
        const auto& fb = features[b];
        return fa && fb ? FeatureExtractor::hashDistance(*fa, *fb) : 64;
    }

    SimilarityMatcher::Candidates candidates() const {
        CancellationFlag cancel;
        auto result = SimilarityMatcher::candidatePairs(pictures, features, cancel);
        EXPECT_TRUE(result.has_value());
        return result.value_or(SimilarityMatcher::Candidates{});
    }
};

TEST(SimilarityMatcher, HashesThatShareNoByteAreNeverCompared) {
    Scene scene;
    scene.add("/p/a.jpg", still(0));
    scene.add("/p/b.jpg", still(0x0101010101010101ULL)); // 8 bits away, every byte differs
    auto none = scene.candidates();
    EXPECT_EQ(none.proposed, 0);
    EXPECT_TRUE(none.pairs.empty());

    scene.features[1] = still(0x0101010101010100ULL); // now the lowest byte is shared
    auto one = scene.candidates();
    EXPECT_EQ(one.proposed, 1);
    ASSERT_EQ(one.pairs.size(), 1u);
    EXPECT_EQ(one.pairs[0],
              (SimilarPair{.a = 0, .b = 1, .distance = 7, .shapesAgree = true, .detail = 7}));
}

TEST(SimilarityMatcher, QuarterTurnedCopyAgreesInShapeOnExchangedSides) {
    Scene scene;
    std::array<std::uint64_t, 4> turns = {0x0123456789ABCDEFULL, 0xF0E1D2C3B4A59687ULL,
                                          0x1111222233334444ULL, 0x5555666677778888ULL};
    scene.add("/p/a.jpg", features(turns, 4000, 3000));
    // The same picture turned a quarter clockwise: its turns are a's, shifted.
    scene.add("/p/b.jpg", features({turns[1], turns[2], turns[3], turns[0]}, 3000, 4000));
    auto result = scene.candidates();
    ASSERT_EQ(result.pairs.size(), 1u);
    EXPECT_EQ(result.pairs[0].distance, 0);
    EXPECT_TRUE(result.pairs[0].shapesAgree);
}

TEST(SimilarityMatcher, CropsAgreeInShapeWithinTheTolerance) {
    Scene scene;
    scene.add("/p/four-three.jpg", still(42, 4000, 3000));
    scene.add("/p/sixteen-nine.jpg", still(42, 1920, 1080));
    scene.add("/p/square.jpg", still(42, 1000, 1000));
    auto pairs = scene.candidates().pairs;
    ASSERT_EQ(pairs.size(), 3u);
    EXPECT_TRUE(pairs[0].shapesAgree);  // 4:3 and 16:9
    EXPECT_TRUE(pairs[1].shapesAgree);  // 4:3 and 1:1
    EXPECT_FALSE(pairs[2].shapesAgree); // 16:9 and 1:1
}

TEST(SimilarityMatcher, TimeNeighboursAreComparedWithTheLooserBound) {
    Scene scene;
    std::uint64_t base = 0;
    std::uint64_t far = (1ULL << 30) - 1; // 30 bits away
    auto dated = [](ImageFeatures f, double seconds) {
        f.captureDate = Date{700000000.0 + seconds};
        return f;
    };
    scene.add("/p/burst/1.jpg", dated(still(base), 0));
    scene.add("/p/burst/2.jpg", dated(still(far), 30));
    scene.add("/p/burst/3.jpg", dated(still(far), 91)); // more than a minute after 1
    scene.add("/p/other/4.jpg", dated(still(base), 1)); // another folder
    auto result = scene.candidates();
    // 1-2 and 2-3 are time neighbours; 1-4 share hashes exactly.
    EXPECT_EQ(result.proposed, 3);
    ASSERT_EQ(result.pairs.size(), 3u);
    EXPECT_EQ(result.pairs[0],
              (SimilarPair{.a = 0, .b = 1, .distance = 30, .shapesAgree = true, .detail = 30}));
    EXPECT_EQ(result.pairs[1].a, 0);
    EXPECT_EQ(result.pairs[1].b, 3);
    EXPECT_EQ(result.pairs[2].a, 1);
    EXPECT_EQ(result.pairs[2].b, 2);
    EXPECT_EQ(result.pairs[2].distance, 0);
}

TEST(SimilarityMatcher, PicturesWithoutFeaturesAreLeftOut) {
    Scene scene;
    scene.add("/p/a.jpg", still(7));
    scene.add("/p/gone.jpg", std::nullopt);
    scene.add("/p/b.jpg", still(7));
    auto result = scene.candidates();
    ASSERT_EQ(result.pairs.size(), 1u);
    EXPECT_EQ(result.pairs[0].a, 0);
    EXPECT_EQ(result.pairs[0].b, 2);
}

// The proposal rules written out the slow way, over every ordered pair.
std::set<std::pair<int, int>>
bruteForceProposals(const std::vector<std::optional<ImageFeatures>>& f) {
    auto proposes = [&](int x, int y) {
        const auto& measuredX = f[x];
        const auto& measuredY = f[y];
        if (!measuredX || !measuredY) {
            return false;
        }
        const ImageFeatures& fx = *measuredX;
        const ImageFeatures& fy = *measuredY;
        bool shared = false;
        for (std::uint64_t h : fx.hashes) {
            for (int p = 0; p < 8; ++p) {
                shared = shared || ((h >> (8 * p)) & 0xFF) == ((fy.hashes[0] >> (8 * p)) & 0xFF);
            }
        }
        return shared && FeatureExtractor::hashDistance(fx, fy) <= 20;
    };
    std::set<std::pair<int, int>> result;
    for (int x = 0; x < static_cast<int>(f.size()); ++x) {
        for (int y = 0; y < static_cast<int>(f.size()); ++y) {
            if (x != y && proposes(x, y)) {
                result.emplace(std::min(x, y), std::max(x, y));
            }
        }
    }
    return result;
}

TEST(SimilarityMatcher, ProposesExactlyWhatTheRulesSayOncePerPair) {
    std::mt19937_64 random(11);
    Scene scene;
    // Clusters of near copies with independent turns, plus unrelated pictures.
    for (int cluster = 0; cluster < 40; ++cluster) {
        std::array<std::uint64_t, 4> turns = {random(), random(), random(), random()};
        for (int copy = 0; copy < 5; ++copy) {
            auto noisy = turns;
            for (auto& h : noisy) {
                for (int flips = static_cast<int>(random() % 14); flips > 0; --flips) {
                    h ^= 1ULL << (random() % 64);
                }
            }
            scene.add("/p/" + std::to_string(cluster) + "-" + std::to_string(copy),
                      features(noisy));
        }
    }
    for (int i = 0; i < 100; ++i) {
        scene.add("/q/" + std::to_string(i), features({random(), random(), random(), random()}));
    }
    auto expected = bruteForceProposals(scene.features);
    auto result = scene.candidates();
    EXPECT_EQ(result.proposed, static_cast<std::int64_t>(expected.size()));
    std::set<std::pair<int, int>> kept;
    for (const auto& pair : result.pairs) {
        EXPECT_TRUE(kept.emplace(pair.a, pair.b).second) << "repeated " << pair.a << "," << pair.b;
        EXPECT_TRUE(expected.contains({pair.a, pair.b}));
        EXPECT_EQ(pair.distance, scene.distance(pair.a, pair.b));
    }
    // A proposal is kept when the broadest preset could accept it; those
    // further apart are proposed but dropped.
    int dropped = 0;
    for (const auto& [a, b] : expected) {
        bool usable = scene.distance(a, b) <= 16;
        EXPECT_EQ(kept.contains({a, b}), usable) << a << "," << b;
        dropped += usable ? 0 : 1;
    }
    EXPECT_GT(result.pairs.size(), 300u);
    EXPECT_GT(dropped, 100);
}

TEST(SimilarityMatcher, CancelledBeforehandGivesNoIndex) {
    Scene scene;
    scene.add("/p/a.jpg", still(1));
    scene.add("/p/b.jpg", still(1));
    CancellationFlag cancel;
    cancel.cancel();
    EXPECT_FALSE(SimilarityMatcher::index(scene.pictures, scene.features, {}, cancel).has_value());
}

} // namespace
} // namespace brevant
