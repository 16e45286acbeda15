#include "engine/pipeline/ScanPipeline.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "engine/catalogs/CatalogRefusal.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using testing::TempTree;
using Stage = ScanProgress::Stage;

// The sample library of tools/make-sample-library: 20 pictures with two
// identical pairs, other versions of four photos and a burst of four.
class SampleLibrary {
public:
    SampleLibrary()
        : root_(tree_.path("library")) {
        std::string command = std::string(BREVANT_SAMPLE_TOOL) + " '" + root_ + "' >/dev/null";
        ok_ = testing::runCommand(command) == 0;
    }

    [[nodiscard]] bool ok() const { return ok_; }

    [[nodiscard]] const std::string& root() const { return root_; }

    [[nodiscard]] std::string path(const std::string& relative) const {
        return root_ + "/" + relative;
    }

    // "similar: Backup/a.jpg Holidays/a.jpg", members sorted, groups sorted.
    [[nodiscard]] std::vector<std::string> names(const std::vector<DuplicateGroup>& groups) const {
        std::vector<std::string> lines;
        for (const auto& group : groups) {
            std::vector<std::string> members;
            members.reserve(group.members.size());
            for (const auto& member : group.members) {
                members.push_back(member.path.substr(root_.size() + 1));
            }
            std::ranges::sort(members);
            lines.push_back(fmt::format("{}: {}", rawValue(group.kind), fmt::join(members, " ")));
        }
        std::ranges::sort(lines);
        return lines;
    }

private:
    TempTree tree_;
    std::string root_;
    bool ok_ = false;
};

// How often the pipeline called the engine: every picture handed to the
// measuring step without a cache is one call of the feature extractor.
struct Calls {
    std::atomic<int> scans = 0;
    std::atomic<int> extracted = 0;
    std::atomic<int> faceChecks = 0;
};

ScanPipeline::Steps counting(Calls& calls) {
    ScanPipeline::Steps steps = ScanPipeline::Steps::standard();
    steps.scan = [&calls, scan = steps.scan](const std::vector<std::string>& folders,
                                             bool keepPictures, const CancellationFlag& cancel,
                                             const ExactMatcher::Progress& progress) {
        ++calls.scans;
        return scan(folders, keepPictures, cancel, progress);
    };
    steps.measure = [&calls, measure = steps.measure](std::vector<PhotoAsset> pictures,
                                                      FeatureCache* cache,
                                                      const CancellationFlag& cancel,
                                                      const SimilarityMatcher::Progress& progress) {
        calls.extracted += static_cast<int>(pictures.size());
        return measure(std::move(pictures), cache, cancel, progress);
    };
    steps.checkFaces = [&calls, check = steps.checkFaces](
                           const std::vector<DuplicateGroup>& groups, const SimilarityIndex& index,
                           FeatureCache* cache, const CancellationFlag& cancel,
                           const SimilarityMatcher::Progress& progress) {
        ++calls.faceChecks;
        return check(groups, index, cache, cancel, progress);
    };
    return steps;
}

ScanRequest reviewOf(const SampleLibrary& library, ScanMode mode) {
    return {.source = ScanSource::ofFolders({library.root()}),
            .mode = mode,
            .review = ReviewRules{.locks = std::make_shared<LockStore>(std::nullopt)}};
}

// Each group's id with the keeper suggested for it.
std::map<std::string, std::optional<KeeperPolicy::Suggestion>> keepers(const ScanOutcome& outcome) {
    std::map<std::string, std::optional<KeeperPolicy::Suggestion>> keepers;
    for (const auto& group : outcome.session->groups()) {
        keepers[group.id] = outcome.session->suggestion(group);
    }
    return keepers;
}

class ScanPipelineTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(library().ok()) << "the sample library was not made"; }

    // Made once, for every test that reads it.
    static const SampleLibrary& library() {
        static const SampleLibrary made;
        return made;
    }
};

TEST_F(ScanPipelineTest, ReviewsTheSampleLibraryInEveryModeAndPreset) {
    const std::vector<std::string> identical{
        "identical: Backup/IMG_1001.JPG Holidays/IMG_1001.JPG",
        "identical: Backup/IMG_1003.JPG Holidays/IMG_1003.JPG"};
    const std::vector<std::string> conservative{
        "similar: Backup/IMG_1001.JPG Exports/IMG_1001 evening.jpg Holidays/IMG_1001 small.jpg "
        "Holidays/IMG_1001.JPG",
        "similar: Backup/IMG_1003.JPG Holidays/IMG_1003 turned.jpg Holidays/IMG_1003.JPG",
        "similar: Exports/IMG_1002 web.jpg Holidays/IMG_1002.JPG"};
    std::vector<std::string> balanced = conservative;
    balanced.insert(balanced.end(), {"similar: Burst/IMG_2001.JPG Burst/IMG_2002.JPG",
                                     "similar: Burst/IMG_2003.JPG Burst/IMG_2004.JPG",
                                     "similar: Exports/IMG_1004 wide.jpg Holidays/IMG_1004.JPG"});
    std::ranges::sort(balanced);
    // The burst is one series; the identical copies outside it stay groups.
    std::vector<std::string> series = identical;
    series.emplace_back(
        "series: Burst/IMG_2001.JPG Burst/IMG_2002.JPG Burst/IMG_2003.JPG Burst/IMG_2004.JPG");
    std::ranges::sort(series);

    struct Case {
        ScanMode mode;
        std::vector<std::string> groups;
    };

    const std::vector<Case> cases{
        {ScanMode::identical(), identical},
        {ScanMode::similar(SimilarityPreset::conservative), conservative},
        {ScanMode::similar(SimilarityPreset::balanced), balanced},
        // Broad reaches no further in this library than balanced.
        {ScanMode::similar(SimilarityPreset::broad), balanced},
        {ScanMode::series(), series},
    };
    TempTree data;
    for (const auto& [mode, expected] : cases) {
        SCOPED_TRACE(::testing::PrintToString(mode));
        ScanRequest request = reviewOf(library(), mode);
        request.featureCache = data.path("features.plist");
        auto outcome = ScanPipeline().run(request, CancellationFlag(), {});

        ASSERT_TRUE(outcome.has_value()) << outcome.error();
        EXPECT_EQ(library().names(outcome->groups), expected);
        EXPECT_EQ(outcome->index != nullptr, mode.measures());
        ASSERT_NE(outcome->session, nullptr);
        EXPECT_EQ(outcome->session->groups(), outcome->groups);
        for (const auto& group : outcome->groups) {
            EXPECT_TRUE(outcome->session->suggestion(group).has_value()) << group.id;
        }
    }
}

TEST_F(ScanPipelineTest, RegroupGivesTheGroupsAndKeepersOfAFreshScanWithoutMeasuring) {
    Calls calls;
    ScanPipeline pipeline(counting(calls));
    auto scanned = pipeline.run(reviewOf(library(), ScanMode::similar(SimilarityPreset::balanced)),
                                CancellationFlag(), {});
    ASSERT_TRUE(scanned.has_value());
    ASSERT_EQ(calls.extracted, 20);
    ASSERT_EQ(calls.faceChecks, 1);

    std::vector<ScanOutcome> regrouped;
    regrouped.reserve(EnumCases<SimilarityPreset>::kAll.size());
    for (SimilarityPreset preset : EnumCases<SimilarityPreset>::kAll) {
        regrouped.push_back(ScanPipeline::regroup(*scanned, preset));
    }
    EXPECT_EQ(calls.extracted, 20);
    EXPECT_EQ(calls.faceChecks, 1);
    EXPECT_EQ(calls.scans, 1);

    for (const auto& outcome : regrouped) {
        SimilarityPreset preset = outcome.request.mode.preset;
        SCOPED_TRACE(rawValue(preset));
        auto fresh = ScanPipeline().run(reviewOf(library(), ScanMode::similar(preset)),
                                        CancellationFlag(), {});
        ASSERT_TRUE(fresh.has_value());
        EXPECT_EQ(outcome.groups, fresh->groups);
        EXPECT_EQ(keepers(outcome), keepers(*fresh));
        // The scan and the measurements are shared, not made again.
        EXPECT_EQ(outcome.index, scanned->index);
        EXPECT_EQ(outcome.result, scanned->result);
        EXPECT_NE(outcome.session, scanned->session);
    }
}

TEST_F(ScanPipelineTest, ARegroupAndARescanCarryTheMarksStillAllowedOver) {
    auto scanned = ScanPipeline().run(
        reviewOf(library(), ScanMode::similar(SimilarityPreset::balanced)), CancellationFlag(), {});
    ASSERT_TRUE(scanned.has_value());
    ReviewSession& session = *scanned->session;
    // Every group keeps one copy: 15 pictures in 6 groups leave 9 to mark.
    ASSERT_EQ(session.markAllSuggested(), 9);
    std::string locked = *session.marks().begin();
    ASSERT_TRUE(session.lock(locked).has_value());
    std::set<std::string> marks = session.marks();

    ScanOutcome regrouped = ScanPipeline::regroup(*scanned, SimilarityPreset::conservative);
    EXPECT_TRUE(regrouped.session->marks().empty());
    regrouped.carryMarks(*scanned);
    std::set<std::string> inConservative;
    std::ranges::copy_if(
        marks, std::inserter(inConservative, inConservative.end()),
        [&](const std::string& path) { return regrouped.session->group(path) != nullptr; });
    EXPECT_LT(inConservative.size(), marks.size());
    EXPECT_EQ(regrouped.session->marks(), inConservative);
    // On a worker, from the marks as they stood when the regroup began: the
    // same marks, counted as carried until the older ones change.
    ReviewSession::MarksAt at = session.marksAt();
    ScanOutcome onWorker = ScanPipeline::regroup(*scanned, SimilarityPreset::conservative);
    onWorker.carryMarks(*scanned, at);
    EXPECT_EQ(onWorker.session->marks(), inConservative);
    EXPECT_TRUE(onWorker.carriesMarksOf(*scanned));
    // Another mode's regroup hands back the same session: never carried
    // into itself.
    ScanOutcome same = ScanPipeline::regroup(*scanned, SimilarityPreset::conservative);
    same.session = scanned->session;
    same.carryMarks(*scanned, at);
    EXPECT_FALSE(same.carriesMarksOf(*scanned));

    auto rescanned = ScanPipeline().rescan(*scanned, CancellationFlag(), {});
    ASSERT_TRUE(rescanned.has_value());
    EXPECT_EQ(rescanned->session->marks(), marks);
    EXPECT_TRUE(rescanned->session->isLocked(locked));
    // Carried from the older marks as they stand: no need to carry them
    // again, until one of them changes.
    EXPECT_TRUE(rescanned->carriesMarksOf(*scanned));
    EXPECT_FALSE(rescanned->carriesMarksOf(regrouped));
    session.unmark(*marks.begin());
    EXPECT_FALSE(rescanned->carriesMarksOf(*scanned));
}

TEST_F(ScanPipelineTest, MovedCopiesLeaveTheResultsAndComeBackWhenPutBack) {
    auto scanned = ScanPipeline().run(
        reviewOf(library(), ScanMode::similar(SimilarityPreset::balanced)), CancellationFlag(), {});
    ASSERT_TRUE(scanned.has_value());
    ASSERT_EQ(scanned->session->markAllSuggested(), 9);
    std::vector<std::string> marked(scanned->session->marks().begin(),
                                    scanned->session->marks().end());
    // Every mark moves but the last, which stays where it was.
    CleanupReport report;
    std::set<std::string> moved;
    for (const auto& path : marked) {
        bool stays = path == marked.back();
        report.items.push_back({.removal = {.path = path},
                                .outcome = stays ? ItemOutcome::skipped("Changed since the scan.")
                                                 : ItemOutcome::movedToTrash(path + ".trashed")});
        if (!stays) {
            moved.insert(path);
        }
    }

    ScanOutcome cleaned = ScanPipeline::afterCleanup(*scanned, report);
    EXPECT_EQ(cleaned.away, moved);
    std::set<std::string> left;
    for (const auto& group : cleaned.groups) {
        EXPECT_GE(group.members.size(), 2U);
        for (const auto& member : group.members) {
            left.insert(member.path);
        }
    }
    for (const auto& path : moved) {
        EXPECT_FALSE(left.contains(path)) << path;
        EXPECT_EQ(cleaned.session->group(path), nullptr) << path;
    }
    EXPECT_EQ(cleaned.groups, cleaned.session->groups());
    // What stayed keeps its mark; nothing else is marked, and marking every
    // suggestion again finds nothing that moved.
    EXPECT_EQ(cleaned.session->marks(), std::set<std::string>{marked.back()});
    cleaned.session->markAllSuggested();
    for (const auto& path : cleaned.session->marks()) {
        EXPECT_FALSE(moved.contains(path)) << path;
    }
    // A regroup keeps them out; the same result and index are shared.
    ScanOutcome regrouped = ScanPipeline::regroup(cleaned, SimilarityPreset::conservative);
    for (const auto& group : regrouped.groups) {
        for (const auto& member : group.members) {
            EXPECT_FALSE(moved.contains(member.path)) << member.path;
        }
    }
    EXPECT_EQ(cleaned.index, scanned->index);

    ScanOutcome back = ScanPipeline::afterPutBack(cleaned, {moved.begin(), moved.end()});
    EXPECT_TRUE(back.away.empty());
    EXPECT_EQ(back.groups, scanned->groups);
}

TEST_F(ScanPipelineTest, AListingReadsNoFacesAndMakesNoSession) {
    Calls calls;
    ScanRequest request{.source = ScanSource::ofFolders({library().root()}),
                        .mode = ScanMode::series()};
    auto outcome = ScanPipeline(counting(calls)).run(request, CancellationFlag(), {});

    ASSERT_TRUE(outcome.has_value());
    EXPECT_EQ(outcome->session, nullptr);
    EXPECT_EQ(calls.faceChecks, 0);
    // The report lists what it looked for; a review holds the identical
    // copies besides.
    EXPECT_THAT(library().names(outcome->found()),
                ElementsAre("series: Burst/IMG_2001.JPG Burst/IMG_2002.JPG Burst/IMG_2003.JPG "
                            "Burst/IMG_2004.JPG"));
    EXPECT_EQ(outcome->groups.size(), 3U);
    // The pictures live in the index, not twice.
    EXPECT_TRUE(outcome->result->pictures.empty());
    EXPECT_EQ(outcome->index->pictures.size(), 20U);
}

TEST_F(ScanPipelineTest, ReportsEachStageOnceInOrderAndStopsWhileMeasuring) {
    std::vector<Stage> stages;
    auto record = [&stages](const PipelineProgress& progress) {
        if (stages.empty() || stages.back() != progress.scan.stage) {
            stages.push_back(progress.scan.stage);
        }
    };
    auto done =
        ScanPipeline().run(reviewOf(library(), ScanMode::series()), CancellationFlag(), record);
    ASSERT_TRUE(done.has_value());
    EXPECT_THAT(stages, ElementsAre(Stage::preparing, Stage::discovering, Stage::reading,
                                    Stage::comparing, Stage::verifying, Stage::measuring,
                                    Stage::checkingFaces, Stage::finishing));

    CancellationFlag cancel;
    auto stopping = [&cancel](const PipelineProgress& progress) {
        if (progress.scan.stage == Stage::measuring) {
            cancel.cancel();
        }
    };
    auto stopped = ScanPipeline().run(reviewOf(library(), ScanMode::series()), cancel, stopping);
    ASSERT_TRUE(stopped.has_value());
    EXPECT_TRUE(stopped->cancelled());
    EXPECT_EQ(stopped->index, nullptr);
    EXPECT_EQ(stopped->session, nullptr);
    EXPECT_EQ(library().names(stopped->groups).size(), 2U);
}

TEST(ScanPipeline, ScansACatalogAsOneMoreSource) {
    TempTree tree;
    std::string a = tree.file("Photos/a.jpg", testing::photoOfSize(21, 20'000));
    std::string b = tree.file("Photos/b.jpg", testing::readFile(a));
    testing::LightroomCatalogFixture fixture(tree.path("Lightroom/Family.lrcat"));
    fixture.setVersion("1504002");
    fixture.addPhotoAt(a, {.rating = 3});
    fixture.addPhotoAt(b);
    ScanRequest request{.source = ScanSource::ofCatalog(fixture.path()), .review = ReviewRules{}};

    auto outcome = ScanPipeline().run(request, CancellationFlag(), {});

    ASSERT_TRUE(outcome.has_value()) << outcome.error();
    EXPECT_EQ(
        outcome->catalog,
        (CatalogSource::Facts{.application = CatalogSource::Application::lightroom,
                              .photos = 2,
                              .untested = CatalogRefusal::untestedVersion(
                                              CatalogSource::Application::lightroom, "1504002")
                                              .text(),
                              .untestedVersion = "1504002"}));
    ASSERT_EQ(outcome->groups.size(), 1U);
    auto suggestion = outcome->session->suggestion(outcome->groups.front());
    ASSERT_TRUE(suggestion.has_value());
    // The stars given in Lightroom Classic keep that copy.
    EXPECT_EQ(suggestion->keeperID, a);

    auto notACatalog = ScanPipeline().run({.source = ScanSource::ofCatalog(tree.path("a.txt"))},
                                          CancellationFlag(), {});
    ASSERT_FALSE(notACatalog.has_value());
    EXPECT_EQ(notACatalog.error(), CatalogSource::notACatalog());
}

} // namespace
} // namespace brevant
