#include "engine/scan/ExactMatcher.hpp"

#include "tests/fixtures/Groups.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>

namespace brevant {
namespace {

using testing::memberPaths;

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TempTree;

ScanResult scanTree(const TempTree& tree, const ExactMatcher::Hooks& hooks = {},
                    const ExactMatcher::Progress& progress = nullptr, bool keepPictures = false) {
    CancellationFlag cancel;
    return ExactMatcher::scan({tree.root()}, keepPictures, std::nullopt, cancel, progress, hooks);
}

const SkippedFile* skippedAt(const ScanResult& result, const std::string& path) {
    auto it = std::ranges::find(result.skipped, path, &SkippedFile::path);
    return it == result.skipped.end() ? nullptr : &*it;
}

std::string copyOf(const TempTree& tree, const std::string& from, std::string_view relative) {
    return tree.file(relative, testing::readFile(from));
}

TEST(ExactMatcher, ThreeCopiesFormOneGroupAndASameSizeStrangerStaysOut) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(1, 90'000);
    std::string a = tree.file("2020/a.jpg", bytes);
    std::string b = tree.file("backup/a.jpg", bytes);
    std::string c = tree.file("2020/copy of a.JPG", bytes);
    std::string other = tree.file("2020/other.jpg", testing::photoOfSize(2, 90'000));

    ScanResult result = scanTree(tree);

    ASSERT_EQ(result.groups.size(), 1u);
    const DuplicateGroup& group = result.groups[0];
    // In path order.
    EXPECT_THAT(memberPaths(group), ElementsAre(a, c, b));
    EXPECT_EQ(group.kind, MatchKind::identical);
    EXPECT_EQ(group.size, 90'000);
    EXPECT_EQ(group.id, ContentReader::sha256(a, FileSnapshot::read(a).value_or(FileSnapshot{}),
                                              std::nullopt, nullptr));
    EXPECT_EQ(group.spread, std::nullopt);
    EXPECT_EQ(group.members[0].pixelWidth, 48);
    EXPECT_EQ(group.members[0].pixelHeight, 32);
    EXPECT_EQ(group.members[0].root, tree.root());
    EXPECT_EQ(result.matched(), 3);
    EXPECT_EQ(result.examined, 4);
    EXPECT_EQ(result.discovered, 4);
    EXPECT_THAT(result.skipped, IsEmpty());
    EXPECT_FALSE(result.cancelled);
    EXPECT_LE(result.started, result.finished);
    EXPECT_THAT(result.roots, ElementsAre(tree.root()));
    EXPECT_THAT(result.pictures, IsEmpty());
    (void)other;
}

TEST(ExactMatcher, FilesDifferingInTheirLastByteAreNoGroup) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(3, 120'000);
    tree.file("a.jpg", bytes);
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    tree.file("b.jpg", bytes);

    ScanResult result = scanTree(tree);

    EXPECT_THAT(result.groups, IsEmpty());
    EXPECT_EQ(result.examined, 2);
    EXPECT_THAT(result.skipped, IsEmpty());
}

// Files of one size and first 64 KiB that differ further on, in every
// order: the copies are found whichever member comes first, and the group
// carries their digest.
TEST(ExactMatcher, CopiesAreFoundAmongLookAlikesWhateverComesFirst) {
    struct Case {
        std::string name;
        std::vector<int> variants;       // by path order; equal numbers, equal bytes
        std::vector<std::string> copies; // of the first group
        std::size_t groups = 1;
    };

    const std::vector<Case> cases = {
        {"the first differs from both copies", {1, 2, 2}, {"b.jpg", "c.jpg"}},
        {"the first's copy comes after a stranger", {1, 2, 1}, {"a.jpg", "c.jpg"}},
        {"three strangers before the copies", {1, 2, 3, 4, 4, 4}, {"d.jpg", "e.jpg", "f.jpg"}},
        {"two sets of copies", {1, 2, 1, 2}, {"a.jpg", "c.jpg"}, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TempTree tree;
        std::string base = testing::photoOfSize(4, 100'000);
        std::vector<std::string> paths;
        for (std::size_t i = 0; i < c.variants.size(); ++i) {
            std::string bytes = base;
            bytes[80'000] = static_cast<char>(c.variants[i]);
            paths.push_back(tree.file(std::string(1, static_cast<char>('a' + i)) + ".jpg", bytes));
        }

        ScanResult result = scanTree(tree);

        ASSERT_EQ(result.groups.size(), c.groups);
        const DuplicateGroup& group = result.groups[0];
        std::vector<std::string> expected;
        for (const auto& name : c.copies) {
            expected.push_back(tree.root() + "/" + name);
        }
        EXPECT_EQ(memberPaths(group), expected);
        EXPECT_EQ(group.id,
                  ContentReader::sha256(expected[0],
                                        FileSnapshot::read(expected[0]).value_or(FileSnapshot{}),
                                        std::nullopt, nullptr));
        EXPECT_THAT(result.skipped, IsEmpty());
    }
}

TEST(ExactMatcher, AHardLinkIsOnePictureNotACopy) {
    TempTree tree;
    tree.file("a.jpg", testing::photoOfSize(4, 50'000));
    tree.hardLink("a.jpg", "link.jpg");

    ScanResult result = scanTree(tree);

    EXPECT_THAT(result.groups, IsEmpty());
    EXPECT_EQ(result.hardLinksFolded, 1);
    EXPECT_EQ(result.examined, 1);
}

TEST(ExactMatcher, MembersCarryWhatTheWalkKnowsOfThem) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(5, 40'000);
    std::string a = tree.file("a/IMG_0001.jpg", bytes);
    tree.file("a/IMG_0001.xmp", "<x:xmpmeta/>");
    std::string link = tree.hardLink("a/IMG_0001.jpg", "a/linked.jpg");
    std::string b = tree.file("b/IMG_0001.jpg", bytes);

    ScanResult result = scanTree(tree, {}, nullptr, true);

    ASSERT_EQ(result.groups.size(), 1u);
    const PhotoAsset& first = result.groups[0].members[0];
    const PhotoAsset& second = result.groups[0].members[1];
    EXPECT_EQ(first.path, a);
    EXPECT_THAT(first.otherNames, ElementsAre(link));
    EXPECT_THAT(first.relationships, ElementsAre(Relationship::sidecar));
    EXPECT_EQ(first.fixedKeepReason(), reason(Relationship::sidecar));
    EXPECT_EQ(second.path, b);
    EXPECT_THAT(second.otherNames, IsEmpty());
    EXPECT_THAT(second.relationships, IsEmpty());
    EXPECT_FALSE(second.isCloudSynced);
    EXPECT_FALSE(second.isReadOnlyVolume);
    EXPECT_EQ(result.pictures.size(), 2u);
    EXPECT_EQ(result.pictures, result.groups[0].members);
}

TEST(ExactMatcher, AFileRewrittenBeforeTheByteComparisonIsLeftOut) {
    for (bool rewriteReference : {false, true}) {
        SCOPED_TRACE(rewriteReference ? "the reference changed" : "the copy changed");
        TempTree tree;
        std::string bytes = testing::photoOfSize(6, 70'000);
        std::string a = tree.file("a.jpg", bytes);
        std::string b = tree.file("b.jpg", bytes);
        std::string rewritten = rewriteReference ? a : b;
        ExactMatcher::Hooks hooks;
        hooks.beforeVerifying = [&] { testing::rewriteKeepingSize(rewritten); };

        ScanResult result = scanTree(tree, hooks, nullptr, true);

        EXPECT_THAT(result.groups, IsEmpty());
        ASSERT_EQ(result.skipped.size(), 1u);
        EXPECT_EQ(result.skipped[0].path, rewritten);
        EXPECT_EQ(result.skipped[0].reason, SkipReason::changedDuringScan);
        EXPECT_FALSE(result.cancelled);
        // Both are still handed on to the similarity steps, which decode
        // them again: the changed one may be another version of a photo.
        ASSERT_EQ(result.pictures.size(), 2u);
        EXPECT_EQ(result.pictures[0].path, a);
        EXPECT_EQ(result.pictures[1].path, b);
    }
}

TEST(ExactMatcher, CancellingWhileComparingKeepsTheGroupsAlreadySettled) {
    // More pairs than one batch holds, each of its own size: the first batch
    // is hashed and confirmed before the second is read.
    TempTree tree;
    const int pairs = static_cast<int>(ExactMatcher::kBatchSize);
    const int firstBatch = pairs / 2;
    for (int i = 0; i < pairs; ++i) {
        std::string bytes = testing::photoOfSize(100 + i, 20'000 + 100 * i);
        tree.file(fmt::format("a/{}.jpg", i), bytes);
        tree.file(fmt::format("b/{}.jpg", i), bytes);
    }
    using Stage = ScanProgress::Stage;
    // Stopped while the second batch is hashed, and while the first batch's
    // last report of its byte comparisons is made.
    for (Stage stopAt : {Stage::comparing, Stage::verifying}) {
        SCOPED_TRACE(rawValue(stopAt));
        CancellationFlag cancel;
        std::vector<ScanProgress> seen;
        auto progress = [&](const ScanProgress& now) {
            seen.push_back(now);
            if (now.stage == stopAt && now.matched > 0) {
                cancel.cancel();
            }
        };

        ScanResult result =
            ExactMatcher::scan({tree.root()}, false, std::nullopt, cancel, progress);

        EXPECT_TRUE(result.cancelled);
        // Exactly the first batch, the biggest copies, which free the most.
        ASSERT_EQ(result.groups.size(), static_cast<std::size_t>(firstBatch));
        for (std::size_t i = 0; i < result.groups.size(); ++i) {
            EXPECT_EQ(result.groups[i].size, 20'000 + 100 * (pairs - 1 - static_cast<int>(i)));
            EXPECT_EQ(result.groups[i].members.size(), 2u);
        }
        EXPECT_THAT(result.skipped, IsEmpty());
        EXPECT_LE(result.started, result.finished);
        ASSERT_FALSE(seen.empty());
        EXPECT_EQ(seen.back().stage, Stage::finishing);
        EXPECT_EQ(seen.back().matched, 2 * firstBatch);
        EXPECT_EQ(seen.back().examined, 2 * pairs);
    }
}

TEST(ExactMatcher, ReportsEveryStageInOrder) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(9, 20'000);
    tree.file("a.jpg", bytes);
    tree.file("b.jpg", bytes);
    std::vector<ScanProgress::Stage> stages;
    auto progress = [&](const ScanProgress& now) {
        if (stages.empty() || stages.back() != now.stage) {
            stages.push_back(now.stage);
        }
    };

    ScanResult result = scanTree(tree, {}, progress);

    using Stage = ScanProgress::Stage;
    EXPECT_THAT(stages, ElementsAre(Stage::preparing, Stage::discovering, Stage::reading,
                                    Stage::comparing, Stage::verifying, Stage::finishing));
    EXPECT_EQ(result.groups.size(), 1u);
}

TEST(ExactMatcher, ACancelledScanStopsBeforeReading) {
    TempTree tree;
    tree.file("a.jpg", testing::photoOfSize(10, 20'000));
    CancellationFlag cancel;
    cancel.cancel();

    ScanResult result = ExactMatcher::scan({tree.root()}, true, std::nullopt, cancel, nullptr);

    EXPECT_TRUE(result.cancelled);
    EXPECT_THAT(result.groups, IsEmpty());
    EXPECT_EQ(result.examined, 0);
}

TEST(ExactMatcher, GroupsComeInOrderOfTheBytesTheyWouldFree) {
    TempTree tree;
    // Frees 2 x 30,000 = 60,000 bytes.
    std::string three = testing::photoOfSize(11, 30'000);
    std::string t1 = tree.file("z/three1.jpg", three);
    tree.file("z/three2.jpg", three);
    tree.file("z/three3.jpg", three);
    // Two groups freeing 50,000 bytes each: the first path decides.
    std::string fiveA = testing::photoOfSize(12, 50'000);
    std::string fiveB = testing::photoOfSize(13, 50'000);
    std::string b1 = tree.file("b/five.jpg", fiveB);
    tree.file("c/five.jpg", fiveB);
    std::string a1 = tree.file("m/five.jpg", fiveA);
    tree.file("n/five.jpg", fiveA);
    // Frees 10,000 bytes.
    std::string small = testing::photoOfSize(14, 10'000);
    tree.file("a/small.jpg", small);
    tree.file("a/small copy.jpg", small);

    ScanResult result = scanTree(tree);

    ASSERT_EQ(result.groups.size(), 4u);
    EXPECT_EQ(result.groups[0].members[0].path, t1);
    EXPECT_EQ(result.groups[1].members[0].path, b1);
    EXPECT_EQ(result.groups[2].members[0].path, a1);
    EXPECT_EQ(result.groups[3].members[0].path, tree.path("a/small copy.jpg"));
    EXPECT_EQ(result.matched(), 9);
}

TEST(ExactMatcher, PicturesThatCannotBeReadAreSkippedWithTheirReason) {
    TempTree tree;
    std::string bytes = testing::photoOfSize(15, 10'000);
    tree.file("a.jpg", bytes);
    tree.file("b.jpg", bytes);
    std::string noise = tree.file("noise.jpg", std::string(10'000, '\x5A'));
    std::string text = tree.file("text.jpg", std::string(10'000, 'a'));
    std::string raw = tree.file("unknown.nef", std::string(10'000, '\x01'));

    ScanResult result = scanTree(tree);

    ASSERT_EQ(result.groups.size(), 1u);
    EXPECT_EQ(result.groups[0].members.size(), 2u);
    EXPECT_EQ(result.examined, 2);
    ASSERT_NE(skippedAt(result, noise), nullptr);
    EXPECT_EQ(skippedAt(result, noise)->reason, SkipReason::corrupt);
    EXPECT_EQ(skippedAt(result, noise)->detail, std::nullopt);
    ASSERT_NE(skippedAt(result, text), nullptr);
    EXPECT_EQ(skippedAt(result, text)->reason, SkipReason::corrupt);
    ASSERT_NE(skippedAt(result, raw), nullptr);
    EXPECT_EQ(skippedAt(result, raw)->reason, SkipReason::unsupportedFormat);
    EXPECT_EQ(skippedAt(result, raw)->detail, "This computer cannot decode RAW");
}

TEST(ExactMatcher, RawCopiesMustRenderInFull) {
    auto good = testing::sampleFile("photoprism/assets/examples/canon_eos_6d.dng");
    auto truncated = testing::sampleFile("exiftool-t-images/FujiFilm.raf");
    if (!good || !truncated) {
        GTEST_SKIP() << "the shared sample photos are not present";
    }
    TempTree tree;
    std::string g1 = copyOf(tree, *good, "good/1.dng");
    std::string g2 = copyOf(tree, *good, "good/2.dng");
    std::string t1 = copyOf(tree, *truncated, "cut/1.raf");
    std::string t2 = copyOf(tree, *truncated, "cut/2.raf");

    ScanResult result = scanTree(tree);

    ASSERT_EQ(result.groups.size(), 1u);
    EXPECT_THAT(memberPaths(result.groups[0]), ElementsAre(g1, g2));
    EXPECT_EQ(result.groups[0].members[0].pixelWidth, 1224);
    for (const auto& path : {t1, t2}) {
        ASSERT_NE(skippedAt(result, path), nullptr) << path;
        EXPECT_EQ(skippedAt(result, path)->reason, SkipReason::unsupportedFormat);
        EXPECT_EQ(skippedAt(result, path)->detail, "This computer cannot render this camera's RAW");
    }
}

TEST(ExactMatcher, BucketsByDigestAndKeepsEachFailure) {
    using Failure = ContentReader::Failure;
    std::vector<std::optional<ExactMatcher::HashResult>> results = {
        ExactMatcher::HashResult("aa"),
        ExactMatcher::HashResult(std::unexpected(Failure{Failure::Kind::changed, {}, "/x"})),
        ExactMatcher::HashResult("bb"),
        ExactMatcher::HashResult("aa"),
        std::nullopt,
    };
    ExactMatcher::Failures failures;
    auto buckets = ExactMatcher::buckets(results, failures);
    EXPECT_EQ(buckets.size(), 2u);
    EXPECT_THAT(buckets["aa"], ElementsAre(0u, 3u));
    EXPECT_THAT(buckets["bb"], ElementsAre(2u));
    ASSERT_EQ(failures.size(), 2u);
    EXPECT_EQ(failures.at(1).kind, Failure::Kind::changed);
    EXPECT_EQ(failures.at(4).kind, Failure::Kind::cancelled);
}

TEST(ExactMatcher, CloudSyncedFolders) {
    EXPECT_TRUE(ExactMatcher::isCloudSynced("/home/a/Library/Mobile Documents/com~apple/x.jpg"));
    EXPECT_TRUE(ExactMatcher::isCloudSynced("/Users/a/Library/CloudStorage/Dropbox/x.jpg"));
    EXPECT_FALSE(ExactMatcher::isCloudSynced("/home/a/Pictures/Library/x.jpg"));
}

} // namespace
} // namespace brevant
