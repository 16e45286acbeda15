#include "engine/review/KeeperPolicy.hpp"

#include "tests/fixtures/Groups.hpp"
#include "tests/review/ReviewFixtures.hpp"

#include "engine/scan/CatalogApplication.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace brevant {
namespace {

using Priority = KeeperPolicy::Priority;
using testing::copyAt;
using testing::groupOf;
using testing::memberPaths;

// Measurements looked up by path, as a scan's would be.
struct Measures {
    std::map<std::string, double> sharpness;
    std::map<std::string, int> quality;
    std::map<std::string, FaceReading> faces;

    void applyTo(KeeperPolicy::Context& context) const {
        context.sharpness = [table = sharpness](const PhotoAsset& asset) {
            auto found = table.find(asset.path);
            return found != table.end() ? std::optional(found->second) : std::nullopt;
        };
        context.quality = [table = quality](const PhotoAsset& asset) {
            auto found = table.find(asset.path);
            return found != table.end() ? std::optional(found->second) : std::nullopt;
        };
        context.faces = [table = faces](const PhotoAsset& asset) {
            auto found = table.find(asset.path);
            return found != table.end() ? std::optional(found->second) : std::nullopt;
        };
    }
};

KeeperPolicy::Context contextWith(std::vector<Priority> priorities, const Measures& measures = {}) {
    KeeperPolicy::Context context;
    context.priorities = std::move(priorities);
    measures.applyTo(context);
    return context;
}

KeeperPolicy::Suggestion suggest(const DuplicateGroup& group,
                                 const KeeperPolicy::Context& context) {
    auto suggestion = KeeperPolicy::suggestion(group, context);
    EXPECT_TRUE(suggestion.has_value());
    return suggestion.value_or(KeeperPolicy::Suggestion{});
}

// "a" has more pixels; the measures decide between "a" and "b" first.
struct TwoCopies {
    PhotoAsset a = copyAt("/photos/a.jpg", 1);
    PhotoAsset b = copyAt("/photos/b.jpg", 2);

    TwoCopies() { b.pixelWidth = 2000; }

    [[nodiscard]] DuplicateGroup group() const { return groupOf({a, b}); }
};

TEST(KeeperPolicy, SharpnessDecidesOnlyByAClearMargin) {
    TwoCopies copies;
    Measures measures;
    measures.sharpness = {{"/photos/a.jpg", 100}, {"/photos/b.jpg", 150}};
    auto context = contextWith({Priority::sharpest, Priority::mostPixels}, measures);
    EXPECT_EQ(suggest(copies.group(), context),
              (KeeperPolicy::Suggestion{"/photos/b.jpg", "It is clearly the sharpest"}));

    // 149 is not 1.5 times 100: sharpness abstains and the pixels decide.
    measures.sharpness["/photos/b.jpg"] = 149;
    context = contextWith({Priority::sharpest, Priority::mostPixels}, measures);
    EXPECT_EQ(suggest(copies.group(), context),
              (KeeperPolicy::Suggestion{"/photos/a.jpg", "It has the most pixels"}));

    // A sharpness of 0, or none at all, cannot be compared.
    measures.sharpness = {{"/photos/a.jpg", 0}, {"/photos/b.jpg", 500}};
    context = contextWith({Priority::sharpest, Priority::mostPixels}, measures);
    EXPECT_EQ(suggest(copies.group(), context).keeperID, "/photos/a.jpg");
    measures.sharpness = {{"/photos/b.jpg", 500}};
    context = contextWith({Priority::sharpest, Priority::mostPixels}, measures);
    EXPECT_EQ(suggest(copies.group(), context).keeperID, "/photos/a.jpg");
}

TEST(KeeperPolicy, QualityDecidesByTenPoints) {
    TwoCopies copies;
    Measures measures;
    measures.quality = {{"/photos/a.jpg", 61}, {"/photos/b.jpg", 71}};
    auto context = contextWith({Priority::bestQuality, Priority::mostPixels}, measures);
    EXPECT_EQ(suggest(copies.group(), context),
              (KeeperPolicy::Suggestion{"/photos/b.jpg", "It has a clearly higher quality score"}));

    measures.quality["/photos/b.jpg"] = 70;
    context = contextWith({Priority::bestQuality, Priority::mostPixels}, measures);
    EXPECT_EQ(suggest(copies.group(), context),
              (KeeperPolicy::Suggestion{"/photos/a.jpg", "It has the most pixels"}));
}

TEST(KeeperPolicy, ALockedCopyIsKeptWhateverThePriorities) {
    PhotoAsset loser = copyAt("/photos/in/Downloads/deep/z.jpg", 1);
    loser.pixelWidth = 10;
    loser.snapshot.size = 10;
    loser.snapshot.modifiedSeconds = 1'800'000'000;
    PhotoAsset winner = copyAt("/photos/a.jpg", 2);
    winner.snapshot.size = 5000;
    Measures measures;
    measures.sharpness = {{loser.path, 10}, {winner.path, 1000}};
    measures.quality = {{loser.path, 5}, {winner.path, 95}};
    measures.faces = {{loser.path, FaceReading{2, 2, 0, 1}},
                      {winner.path, FaceReading{2, 0, 2, 1}}};
    std::vector<Priority> every(EnumCases<Priority>::kAll.begin(), EnumCases<Priority>::kAll.end());
    // "oldest" and "newest" pull opposite ways; the one that comes first wins.
    std::erase(every, Priority::newest);
    auto context = contextWith(every, measures);
    context.inboxFolders = {"/photos/in/Downloads"};
    auto group = groupOf({loser, winner});
    ASSERT_EQ(suggest(group, context).keeperID, winner.path);

    context.isLocked = [&loser](const PhotoAsset& asset) { return asset.path == loser.path; };
    EXPECT_EQ(suggest(group, context),
              (KeeperPolicy::Suggestion{loser.path, "You locked this copy"}));
    EXPECT_EQ(memberPaths(DuplicateGroup{"", 0, KeeperPolicy::ranked(group, context)}),
              (std::vector<std::string>{loser.path, winner.path}));
}

TEST(KeeperPolicy, EqualCopiesGiveTheFirstPathByName) {
    auto group = groupOf(
        {copyAt("/photos/b.jpg", 1), copyAt("/photos/B.jpg", 2), copyAt("/photos/a.jpg", 3)});
    auto context = contextWith(KeeperPolicy::standardPriorities());
    EXPECT_EQ(
        suggest(group, context),
        (KeeperPolicy::Suggestion{"/photos/B.jpg", std::string(KeeperPolicy::kEqualCopiesReason)}));
    EXPECT_EQ(KeeperPolicy::kEqualCopiesReason,
              "All copies are equal; the first by name is suggested");
    EXPECT_EQ(memberPaths(DuplicateGroup{"", 0, KeeperPolicy::ranked(group, context)}),
              (std::vector<std::string>{"/photos/B.jpg", "/photos/a.jpg", "/photos/b.jpg"}));
    EXPECT_EQ(KeeperPolicy::suggestion(groupOf({}), context), std::nullopt);
}

TEST(KeeperPolicy, ProtectedFolderThenFixedReasonComeBeforeThePriorities) {
    PhotoAsset plain = copyAt("/photos/a.jpg", 1);
    PhotoAsset withSidecar = copyAt("/photos/b.jpg", 2);
    withSidecar.relationships = {Relationship::sidecar};
    withSidecar.pixelWidth = 100;
    PhotoAsset isProtected = copyAt("/photos/keep/c.jpg", 3);
    isProtected.pixelWidth = 50;
    auto context = contextWith({Priority::mostPixels});

    EXPECT_EQ(suggest(groupOf({plain, withSidecar}), context),
              (KeeperPolicy::Suggestion{withSidecar.path, "It cannot be moved on its own"}));
    context.protectedRoots = {"/photos/keep/"};
    EXPECT_EQ(suggest(groupOf({plain, withSidecar, isProtected}), context),
              (KeeperPolicy::Suggestion{isProtected.path, "It is in a folder you protect"}));
    // Hard links on disk are a fixed reason too: moving one frees nothing.
    PhotoAsset linked = copyAt("/photos/d.jpg", 4);
    linked.snapshot.linkCount = 2;
    linked.pixelWidth = 10;
    EXPECT_EQ(suggest(groupOf({plain, linked}), context).keeperID, linked.path);
}

TEST(KeeperPolicy, WorkInACatalogKeepsTheCopyAndSaysWhatWasDone) {
    PhotoAsset plain = copyAt("/photos/a.jpg", 1);
    PhotoAsset worked = copyAt("/photos/b.jpg", 2);
    worked.pixelWidth = 100;
    worked.catalog = CatalogReference{LightroomRef{.imageID = 7, .rating = 3, .isEdited = true}};
    auto context = contextWith({Priority::mostPixels});
    EXPECT_EQ(suggest(groupOf({plain, worked}), context),
              (KeeperPolicy::Suggestion{
                  worked.path, "You worked on this copy in Lightroom Classic (edited, 3 stars)"}));

    // A Rejected flag is not work.
    worked.catalog = CatalogReference{LightroomRef{.imageID = 7, .pick = -1}};
    EXPECT_EQ(suggest(groupOf({plain, worked}), context),
              (KeeperPolicy::Suggestion{plain.path, "It has the most pixels"}));

    worked.catalog = CatalogReference{CaptureOneRef{.imageID = 9, .colorTags = {0, 4}}};
    EXPECT_EQ(suggest(groupOf({plain, worked}), context),
              (KeeperPolicy::Suggestion{worked.path, "You worked on this copy in Capture One"}));
    worked.catalog = CatalogReference{CaptureOneRef{.imageID = 9, .variants = 1, .colorTags = {0}}};
    EXPECT_EQ(suggest(groupOf({plain, worked}), context).keeperID, plain.path);
}

// The rule of one priority, after the three fixed rules and one a kind of
// catalog.
int compareBy(Priority priority, const PhotoAsset& x, const PhotoAsset& y,
              KeeperPolicy::Context context) {
    context.priorities = {priority};
    auto rules = KeeperPolicy::rules(context);
    EXPECT_EQ(rules.size(), 4U + EnumCases<CatalogApplication>::kAll.size());
    EXPECT_EQ(rules.back().reason, reason(priority));
    int forward = rules.back().compare(x, y);
    EXPECT_EQ(rules.back().compare(y, x), -forward) << "the rule must be symmetric";
    return forward;
}

TEST(KeeperPolicy, EachPriorityPrefersItsOwnSide) {
    PhotoAsset x = copyAt("/photos/x.jpg", 1);
    PhotoAsset y = copyAt("/photos/y.jpg", 2);
    KeeperPolicy::Context context;
    // Equal copies: no priority can tell them apart.
    for (Priority priority : EnumCases<Priority>::kAll) {
        EXPECT_EQ(compareBy(priority, x, y, context), 0) << rawValue(priority);
    }

    PhotoAsset smaller = y;
    smaller.pixelHeight.reset(); // an absent side counts as 0 pixels
    EXPECT_EQ(compareBy(Priority::mostPixels, x, smaller, context), -1);
    smaller = y;
    smaller.snapshot.size = 999;
    EXPECT_EQ(compareBy(Priority::largestFile, x, smaller, context), -1);

    // One nanosecond apart.
    PhotoAsset later = y;
    later.snapshot.modifiedNanoseconds = 1;
    EXPECT_EQ(compareBy(Priority::oldest, x, later, context), -1);
    EXPECT_EQ(compareBy(Priority::newest, x, later, context), 1);

    context.inboxFolders = {"/photos/Downloads"};
    PhotoAsset downloaded = copyAt("/photos/Downloads/2024/y.jpg", 2);
    EXPECT_EQ(compareBy(Priority::filedNotInbox, x, downloaded, context), -1);
    PhotoAsset lookalike = copyAt("/photos/Downloads-old/y.jpg", 2);
    EXPECT_EQ(compareBy(Priority::filedNotInbox, x, lookalike, context), 0);

    PhotoAsset deeper = copyAt("/photos/2024/y.jpg", 2);
    EXPECT_EQ(compareBy(Priority::shallowest, x, deeper, context), -1);

    Measures measures;
    measures.sharpness = {{x.path, 300}, {y.path, 200}};
    measures.quality = {{x.path, 90}, {y.path, 80}};
    measures.faces = {{x.path, FaceReading{3, 0, 2, 1}}, {y.path, FaceReading{3, 1, 1, 1}}};
    measures.applyTo(context);
    EXPECT_EQ(compareBy(Priority::sharpest, x, y, context), -1);
    EXPECT_EQ(compareBy(Priority::bestQuality, x, y, context), -1);
    EXPECT_EQ(compareBy(Priority::eyesOpen, x, y, context), -1);
    EXPECT_EQ(compareBy(Priority::mostSmiles, x, y, context), -1);
    // A different number of faces is not the same people: no comparison.
    measures.faces[y.path] = FaceReading{2, 2, 0, 1};
    measures.applyTo(context);
    EXPECT_EQ(compareBy(Priority::eyesOpen, x, y, context), 0);
    EXPECT_EQ(compareBy(Priority::mostSmiles, x, y, context), 0);
}

TEST(KeeperPolicy, DepthCountsBelowEachCopysRoot) {
    KeeperPolicy::Context context;
    // Near the top of a backup drive mounted deep down, against a copy
    // filed in a folder of the home folder.
    PhotoAsset backup = copyAt("/media/anna/Backup Drive/Photos/a.jpg", 1);
    backup.root = "/media/anna/Backup Drive/Photos/";
    PhotoAsset filed = copyAt("/home/anna/2024/a.jpg", 2);
    filed.root = "/home/anna";
    EXPECT_EQ(compareBy(Priority::shallowest, backup, filed, context), -1);
    // Without a root around it, the whole path counts for both.
    filed.root = "/elsewhere";
    EXPECT_EQ(compareBy(Priority::shallowest, backup, filed, context), 1);
    // A root of "/" counts from the top.
    backup.root = "/";
    filed.root = "/";
    EXPECT_EQ(compareBy(Priority::shallowest, backup, filed, context), 1);
}

TEST(KeeperPolicy, ProtectedFoldersAndInboxesHoldTheirWholeTree) {
    KeeperPolicy::Context context;
    context.protectedRoots = {"/", "/photos/keep/"};
    // Every path lies in "/"; the innermost protected folder is named.
    EXPECT_EQ(context.protectedRoot(copyAt("/anywhere/a.jpg", 1)), "/");
    EXPECT_EQ(context.protectedRoot(copyAt("/photos/keep/2024/a.jpg", 1)), "/photos/keep");
    context.protectedRoots = {"/photos/keep", ""};
    EXPECT_TRUE(context.isInProtectedRoot(copyAt("/photos/keep", 1)));
    EXPECT_FALSE(context.isInProtectedRoot(copyAt("/photos/keeper/a.jpg", 1)));
    EXPECT_FALSE(context.isInProtectedRoot(copyAt("/photos/a.jpg", 1)));

    context.inboxFolders = {"/home/anna/Downloads/"};
    EXPECT_TRUE(context.isInInbox(copyAt("/home/anna/Downloads/a.jpg", 1)));
    EXPECT_TRUE(context.isInInbox(copyAt("/home/anna/Downloads/old/a.jpg", 1)));
    EXPECT_FALSE(context.isInInbox(copyAt("/home/anna/Downloads2/a.jpg", 1)));
    EXPECT_FALSE(context.isInInbox(copyAt("/home/anna/a.jpg", 1)));
}

// The answer of the first rule that tells the two apart.
int firstAnswer(const std::vector<KeeperPolicy::Rule>& rules, const PhotoAsset& x,
                const PhotoAsset& y) {
    for (const auto& rule : rules) {
        if (int answer = rule.compare(x, y); answer != 0) {
            return answer;
        }
    }
    return 0;
}

TEST(KeeperPolicy, RankingStaysOrderlyWhenRulesAbstain) {
    // 150 beats 100 by the margin, 120 beats neither: the sharpness rule is
    // not transitive, and the sizes then point the other way.
    PhotoAsset a = copyAt("/photos/a.jpg", 1);
    PhotoAsset b = copyAt("/photos/b.jpg", 2);
    PhotoAsset c = copyAt("/photos/c.jpg", 3);
    a.snapshot.size = 1;
    b.snapshot.size = 3;
    c.snapshot.size = 2;
    Measures measures;
    measures.sharpness = {{a.path, 150}, {b.path, 100}, {c.path, 120}};
    auto context = contextWith({Priority::sharpest, Priority::largestFile}, measures);
    auto rules = KeeperPolicy::rules(context);
    for (const auto& members : std::vector<std::vector<PhotoAsset>>{
             {a, b, c}, {a, c, b}, {b, a, c}, {b, c, a}, {c, a, b}, {c, b, a}}) {
        auto order = KeeperPolicy::ranked(groupOf(members), context);
        ASSERT_EQ(order.size(), 3U);
        // Every copy is preferred to the one after it by the first rule
        // that tells them apart.
        for (std::size_t i = 0; i + 1 < order.size(); ++i) {
            EXPECT_EQ(firstAnswer(rules, order[i], order[i + 1]), -1)
                << order[i].path << " before " << order[i + 1].path;
        }
        auto suggestion = KeeperPolicy::suggestion(groupOf(members), context);
        ASSERT_TRUE(suggestion.has_value());
        EXPECT_EQ(suggestion->keeperID, order.front().path);
    }
}

// Three similar copies whose neighbours lie inside the margin while the
// outer two do not: the margin rules abstain on two pairs and decide the
// third, so they are not transitive.
TEST(KeeperPolicy, TheKeeperIsTheSameWhateverTheOrderWhenAMarginIsNotTransitive) {
    PhotoAsset blur = copyAt("/photos/a_blur.jpg", 1);
    PhotoAsset mid = copyAt("/photos/b_mid.jpg", 2);
    PhotoAsset sharp = copyAt("/photos/c_sharp.jpg", 3);
    sharp.pixelWidth = 3000;

    struct Case {
        std::string name;
        std::vector<Priority> priorities;
        Measures measures;
        KeeperPolicy::Suggestion expected;
    };

    std::vector<Case> cases{
        // 173 is 1.73 times 100; 140 is within 1.5 times of both.
        {"sharpness",
         {Priority::sharpest},
         {.sharpness = {{blur.path, 100}, {mid.path, 140}, {sharp.path, 173}}},
         {sharp.path, "It is clearly the sharpest"}},
        // 75 is 15 points above 60; 68 is within 10 points of both.
        {"quality",
         {Priority::bestQuality},
         {.quality = {{blur.path, 60}, {mid.path, 68}, {sharp.path, 75}}},
         {sharp.path, "It has a clearly higher quality score"}},
        // 160 and 155 both clearly beat 100 and not each other: the next
        // priority decides between the two, and its reason is given.
        {"sharpness, then pixels",
         {Priority::sharpest, Priority::mostPixels},
         {.sharpness = {{blur.path, 100}, {mid.path, 155}, {sharp.path, 160}}},
         {mid.path, "It has the most pixels"}},
        // Quality abstains throughout; sharpness then splits the copies.
        {"quality, then sharpness",
         {Priority::bestQuality, Priority::sharpest},
         {.sharpness = {{blur.path, 100}, {mid.path, 140}, {sharp.path, 173}},
          .quality = {{blur.path, 60}, {mid.path, 68}, {sharp.path, 69}}},
         {sharp.path, "It is clearly the sharpest"}},
    };
    for (const auto& test : cases) {
        auto context = contextWith(test.priorities, test.measures);
        std::vector<PhotoAsset> members{blur, mid, sharp};
        auto firstOrder =
            memberPaths(DuplicateGroup{"", 0, KeeperPolicy::ranked(groupOf(members), context)});
        std::vector<std::size_t> order{0, 1, 2};
        do {
            auto group = groupOf({members[order[0]], members[order[1]], members[order[2]]});
            EXPECT_EQ(suggest(group, context), test.expected)
                << test.name << ", members from " << group.members.front().path;
            EXPECT_EQ(memberPaths(DuplicateGroup{"", 0, KeeperPolicy::ranked(group, context)}),
                      firstOrder)
                << test.name;
        } while (std::ranges::next_permutation(order).found);
    }
}

TEST(KeeperPolicy, PrioritiesAreListedAndStored) {
    EXPECT_EQ(KeeperPolicy::kPrioritiesRevision, 2);
    EXPECT_EQ(
        KeeperPolicy::standardPriorities(),
        (std::vector<Priority>{Priority::eyesOpen, Priority::bestQuality, Priority::mostSmiles,
                               Priority::mostPixels, Priority::filedNotInbox, Priority::oldest,
                               Priority::shallowest}));
    std::map<Priority, std::pair<std::string, std::string>> expected{
        {Priority::mostPixels, {"Most pixels", "It has the most pixels"}},
        {Priority::largestFile, {"Largest file", "It is the largest file"}},
        {Priority::filedNotInbox, {"Filed, not in Downloads", "It is filed, not in Downloads"}},
        {Priority::oldest, {"Oldest copy", "It is the oldest copy, most likely the original"}},
        {Priority::newest, {"Newest copy", "It is the newest copy"}},
        {Priority::shallowest,
         {"Nearest the top of its folders", "It is nearest the top of its folders"}},
        {Priority::sharpest,
         {"Clearly sharpest (abstains when unclear)", "It is clearly the sharpest"}},
        {Priority::bestQuality,
         {"Clearly highest quality score (abstains when close)",
          "It has a clearly higher quality score"}},
        {Priority::eyesOpen,
         {"Fewest closed eyes (same people in each photo)", "Fewer eyes look closed in it"}},
        {Priority::mostSmiles,
         {"Most smiles (same people in each photo)", "More people are smiling in it"}}};
    ASSERT_EQ(expected.size(), EnumCases<Priority>::kAll.size());
    for (Priority priority : EnumCases<Priority>::kAll) {
        EXPECT_EQ(label(priority), expected[priority].first);
        EXPECT_EQ(reason(priority), expected[priority].second);
        EXPECT_EQ(fromRawValue<Priority>(rawValue(priority)), priority);
    }
    EXPECT_EQ(rawValue(Priority::filedNotInbox), "filedNotInbox");
    EXPECT_EQ(fromRawValue<Priority>("MostPixels"), std::nullopt);
}

TEST(KeeperPolicy, AnOlderSavedOrderLearnsTheNewEntries) {
    using Names = std::vector<std::string>;
    // The user's order of what was there is kept; each new entry goes right
    // after the entry before it in the standard order.
    EXPECT_EQ(KeeperPolicy::upgradedPriorities(
                  Names{"mostPixels", "oldest", "filedNotInbox", "shallowest"}, 1),
              (std::vector<Priority>{Priority::eyesOpen, Priority::bestQuality,
                                     Priority::mostSmiles, Priority::mostPixels, Priority::oldest,
                                     Priority::filedNotInbox, Priority::shallowest}));
    EXPECT_EQ(
        KeeperPolicy::upgradedPriorities(
            Names{"largestFile", "sharpest", "filedNotInbox", "eyesOpen"}, 0),
        (std::vector<Priority>{Priority::largestFile, Priority::sharpest, Priority::filedNotInbox,
                               Priority::oldest, Priority::shallowest, Priority::eyesOpen,
                               Priority::bestQuality, Priority::mostSmiles, Priority::mostPixels}));
    // Under the current revision the user's gaps stay; unknown names and
    // repeats go.
    EXPECT_EQ(
        KeeperPolicy::upgradedPriorities(Names{"oldest", "blurriest", "mostPixels", "oldest"}, 2),
        (std::vector<Priority>{Priority::oldest, Priority::mostPixels}));
    EXPECT_EQ(KeeperPolicy::upgradedPriorities(Names{"newest"}, 3),
              (std::vector<Priority>{Priority::newest}));
    // Nothing known: the standard order.
    EXPECT_EQ(KeeperPolicy::upgradedPriorities(Names{}, 2), KeeperPolicy::standardPriorities());
    EXPECT_EQ(KeeperPolicy::upgradedPriorities(Names{"nonsense"}, 2),
              KeeperPolicy::standardPriorities());
}

} // namespace
} // namespace brevant
