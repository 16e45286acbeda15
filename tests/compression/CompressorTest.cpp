#include "engine/compression/Compressor.hpp"

#include "tests/compression/CompressionFixtures.hpp"

#include "engine/cleanup/PutBack.hpp"
#include "engine/compression/CompressionTexts.hpp"
#include "engine/compression/CopyNames.hpp"
#include "engine/platform/HeifWriter.hpp"
#include "engine/platform/PhotoProbe.hpp"
#include "engine/platform/VideoProbe.hpp"
#include "engine/platform/VideoTranscoder.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals and expecteds.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using testing::CompressionWorkspace;
using testing::exists;
using testing::readFile;
namespace texts = compression_texts;

std::vector<std::string> names(const std::vector<std::string>& paths) {
    std::vector<std::string> found;
    found.reserve(paths.size());
    for (const auto& path : paths) {
        found.push_back(std::filesystem::path(path).filename().string());
    }
    return found;
}

std::string outcomeText(const CompressionReport& report) {
    return report.items.empty() ? "no items" : report.items.front().outcome.text;
}

TEST(Compressor, PhotoCopyIsSmallerUprightDatedWithItsExifAndTheOriginalGoesToTheTrash) {
    CompressionWorkspace w;
    std::string original = w.turnedPhoto("IMG_0001.JPG");
    std::string bytes = readFile(original);
    auto before = FileSnapshot::read(original);
    CompressionPlan plan = w.planOfAll();
    ASSERT_EQ(plan.items.size(), 1U);
    EXPECT_EQ(plan.items[0].kind, MediaKind::photo);
    EXPECT_EQ(plan.items[0].width, 800);
    EXPECT_EQ(plan.items[0].height, 1200);

    CancellationFlag cancel;
    auto report = Compressor(w.data).run(plan, cancel);

    ASSERT_TRUE(report) << report.error();
    ASSERT_EQ(report->compressed(), 1) << outcomeText(*report);
    std::string copy = w.photos + "/IMG_0001.HEIC";
    EXPECT_EQ(report->items[0].copyPath, copy);
    EXPECT_EQ(w.names(), std::vector<std::string>{"IMG_0001.HEIC"});
    auto facts = platform::PhotoProbe::read(copy);
    ASSERT_TRUE(facts) << facts.error();
    EXPECT_EQ(facts->displayedWidth, 800);
    EXPECT_EQ(facts->displayedHeight, 1200);
    EXPECT_EQ(facts->dateTimeOriginal, "2024:05:01 10:20:30");
    EXPECT_TRUE(facts->hasExif);
    auto after = FileSnapshot::read(copy);
    ASSERT_TRUE(after);
    EXPECT_LT(after->size, static_cast<std::int64_t>(bytes.size()));
    EXPECT_EQ(after->modifiedSeconds, before->modifiedSeconds);
    EXPECT_EQ(after->modifiedNanoseconds, before->modifiedNanoseconds);
    EXPECT_TRUE(readFile(w.trashFiles() + "/IMG_0001.JPG") == bytes);
    EXPECT_GT(report->freedBytes(), 0);
}

TEST(Compressor, VideoCopyIsHevcAt1080pOrLessWithSoundDateRotationAndPlace) {
    CompressionWorkspace w;
    (void)w.video("clip.mov", {.width = 640, .height = 360});
    CompressionPlan plan = w.planOfAll();
    ASSERT_EQ(plan.items.size(), 1U);
    EXPECT_EQ(plan.items[0].kind, MediaKind::video);
    platform::VideoEncoding small{.maxLongSide = 480, .maxShortSide = 270, .preset = "ultrafast"};
    Compressor compressor(w.data);
    compressor.setOptions({.video = small});
    std::int64_t lastFrame = 0;

    CancellationFlag cancel;
    auto report = compressor.run(plan, cancel, [&](const CompressionProgress& progress) {
        lastFrame = std::max(lastFrame, progress.frames);
    });

    ASSERT_TRUE(report) << report.error();
    ASSERT_EQ(report->compressed(), 1) << outcomeText(*report);
    std::string copy = w.photos + "/clip (HEVC).mov";
    EXPECT_EQ(w.names(), std::vector<std::string>{"clip (HEVC).mov"});
    auto facts = platform::VideoProbe::read(copy);
    ASSERT_TRUE(facts) << facts.error();
    EXPECT_EQ(facts->codec, "hevc");
    EXPECT_EQ(facts->width, 480);
    EXPECT_EQ(facts->height, 270);
    EXPECT_EQ(facts->rotation, 90);
    EXPECT_EQ(facts->sound.size(), 1U);
    EXPECT_EQ(facts->creationTime, "2024-05-01T10:20:30.000000Z");
    EXPECT_EQ(facts->location, "+48.8584+002.2945/");
    EXPECT_GE(lastFrame, 49);
    EXPECT_TRUE(exists(w.trashFiles() + "/clip.mov"));
}

// A copy damaged after it was written, through the seam, and what the check
// says of it.
struct Sabotage {
    std::string name;
    bool video = false;
    std::function<void(const std::string& original, const std::string& copy)> damage;
    std::string reasonStart;
};

void truncateToHalf(const std::string& /*original*/, const std::string& copy) {
    std::filesystem::resize_file(copy, std::filesystem::file_size(copy) / 2);
}

std::vector<Sabotage> sabotages() {
    return {
        {"truncated photo", false, truncateToHalf, "Its copy could not be read back"},
        {"photo of another size", false,
         [](const std::string& original, const std::string& copy) {
             std::filesystem::remove(copy);
             ASSERT_TRUE(platform::HeifWriter::write(original, copy, 0600, {.maxLongSide = 600}));
         },
         "Its copy is 400\u00d7600 where it should be 800\u00d71200."},
        {"photo not smaller", false,
         [](const std::string& original, const std::string& copy) {
             std::filesystem::remove(copy);
             ASSERT_TRUE(platform::HeifWriter::write(original, copy, 0600, {.lossless = true}));
         },
         "Its copy ("},
        {"truncated video", true, truncateToHalf, ""},
        {"silent video", true,
         [](const std::string& original, const std::string& copy) {
             std::filesystem::remove(copy);
             ASSERT_TRUE(platform::VideoTranscoder::transcode(
                 original, copy, 0600, {.preset = "ultrafast", .keepSound = false}));
         },
         std::string(texts::kSoundLost)},
    };
}

TEST(Compressor, RefusesASabotagedCopyRemovesItAndLeavesTheOriginal) {
    for (const auto& sabotage : sabotages()) {
        SCOPED_TRACE(sabotage.name);
        CompressionWorkspace w;
        std::string original = sabotage.video ? w.video("clip.mov") : w.turnedPhoto("IMG_0001.JPG");
        std::string bytes = readFile(original);
        Compressor compressor(w.data);
        compressor.setOptions(
            {.video = {.preset = "ultrafast"},
             .afterWriting = [&](const PlannedCompression& item, const std::string& copy) {
                 sabotage.damage(item.path, copy);
             }});

        CancellationFlag cancel;
        auto report = compressor.run(w.planOfAll(), cancel);

        ASSERT_TRUE(report) << report.error();
        ASSERT_EQ(report->items.size(), 1U);
        const auto& outcome = report->items[0].outcome;
        EXPECT_EQ(outcome.kind, ItemOutcome::Kind::failed) << outcome.text;
        EXPECT_TRUE(outcome.text.starts_with(sabotage.reasonStart)) << outcome.text;
        EXPECT_TRUE(outcome.text.ends_with(texts::kCopyRemoved)) << outcome.text;
        EXPECT_EQ(w.names(), std::vector<std::string>{names({original})});
        EXPECT_TRUE(readFile(original) == bytes);
        EXPECT_FALSE(report->items[0].copyPath);
    }
}

TEST(Compressor, CopyTakesAFreeNameAndNeverReplacesAFile) {
    CompressionWorkspace w;
    (void)w.turnedPhoto("IMG_0001.JPG");
    std::string taken = w.tree.file("photos/IMG_0001.HEIC", "someone else's");
    CompressionPlan plan = w.planOfAll();

    CancellationFlag cancel;
    auto report = Compressor(w.data).run(plan, cancel);

    ASSERT_TRUE(report) << report.error();
    ASSERT_EQ(report->compressed(), 1) << outcomeText(*report);
    EXPECT_EQ(readFile(taken), "someone else's");
    EXPECT_EQ(names({*report->items[0].copyPath}), std::vector<std::string>{"IMG_0001 (2).HEIC"});
}

TEST(Compressor, PutBackBringsTheOriginalBackByteIdenticalAndSendsItsCopyToTheTrash) {
    CompressionWorkspace w;
    std::string original = w.turnedPhoto("IMG_0001.JPG");
    std::string bytes = readFile(original);
    CompressionPlan plan = w.planOfAll();
    CancellationFlag cancel;
    auto report = Compressor(w.data).run(plan, cancel);
    ASSERT_TRUE(report && report->compressed() == 1);

    PutBackRequest request{.journalPath = report->journalPath, .requests = {{original, original}}};
    auto results = PutBack<CompressionJournalKind>::restore(request, cancel);

    ASSERT_TRUE(results) << results.error();
    ASSERT_EQ(results->size(), 1U);
    EXPECT_EQ((*results)[0].outcome.kind, RestoreOutcome::Kind::restored);
    EXPECT_EQ((*results)[0].companion, texts::copyTrashed("IMG_0001.HEIC"));
    EXPECT_TRUE(readFile(original) == bytes);
    EXPECT_EQ(w.names(), std::vector<std::string>{"IMG_0001.JPG"});
    EXPECT_TRUE(exists(w.trashFiles() + "/IMG_0001.HEIC"));
    auto after = CompressionJournal::report(report->journalPath);
    ASSERT_TRUE(after);
    EXPECT_EQ(after->items[0].outcome.kind, ItemOutcome::Kind::restored);
    ASSERT_TRUE(after->items[0].copyOutcome);
    EXPECT_EQ(after->items[0].copyOutcome->kind, ItemOutcome::Kind::movedToTrash);
    EXPECT_EQ(after->freedBytes(), 0);
}

TEST(Compressor, StopsAfterTheFileInHandWhenCancelled) {
    CompressionWorkspace w;
    (void)w.turnedPhoto("a.jpg", 1);
    (void)w.turnedPhoto("b.jpg", 2);
    CompressionPlan plan = w.planOfAll();
    ASSERT_EQ(plan.items.size(), 2U);
    CancellationFlag cancel;

    auto report = Compressor(w.data).run(plan, cancel, [&](const CompressionProgress& progress) {
        if (progress.done) {
            cancel.cancel();
        }
    });

    ASSERT_TRUE(report) << report.error();
    EXPECT_EQ(report->compressed(), 1);
    EXPECT_EQ(report->items[1].outcome, ItemOutcome::skipped(std::string(texts::kCancelled)));
    EXPECT_EQ(w.names(), (std::vector<std::string>{"a.heic", "b.jpg"}));
}

TEST(Compressor, RunsAPlanOnce) {
    CompressionWorkspace w;
    (void)w.turnedPhoto("a.jpg");
    CompressionPlan plan = w.planOfAll();
    CancellationFlag cancel;
    ASSERT_TRUE(Compressor(w.data).run(plan, cancel));

    auto again = Compressor(w.data).run(plan, cancel);

    ASSERT_FALSE(again);
    EXPECT_EQ(again.error(), texts::kAlreadyRun);
}

// A run killed while it writes a video's copy leaves the original and at
// most its temporary file, which the next run removes.
TEST(Compressor, SigkillWhileWritingLeavesTheOriginalAndATemporaryTheNextRunRemoves) {
    CompressionWorkspace w;
    std::string original = w.video("clip.mov", {.frames = 150});
    std::string bytes = readFile(original);
    CompressionPlan plan = w.planOfAll();
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::close(ready[0]);
        Compressor compressor(w.data);
        compressor.setOptions({.video = {.preset = "slow"}});
        CancellationFlag cancel;
        (void)compressor.run(plan, cancel, [&](const CompressionProgress& progress) {
            if (progress.frames >= 20) {
                (void)!::write(ready[1], "x", 1);
                ::pause();
            }
        });
        ::_exit(0);
    }
    ::close(ready[1]);
    char signal = 0;
    ASSERT_EQ(::read(ready[0], &signal, 1), 1);
    ::close(ready[0]);
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));

    auto left = w.names();
    EXPECT_TRUE(readFile(original) == bytes);
    ASSERT_EQ(left.size(), 2U);
    EXPECT_TRUE(CopyNames::isTemporary(w.photos + "/" + left[0])) << left[0];

    auto recovered = Compressor(w.data).recover();

    ASSERT_TRUE(recovered) << recovered.error();
    ASSERT_EQ(recovered->size(), 1U);
    EXPECT_TRUE((*recovered)[0].reconciled);
    EXPECT_EQ((*recovered)[0].items[0].outcome, ItemOutcome::skipped(texts::stoppedWhileWriting()));
    EXPECT_EQ(w.names(), std::vector<std::string>{"clip.mov"});
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
