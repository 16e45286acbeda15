#include "app/cli/ScanCommand.hpp"

#include "tests/app/ProgramRun.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "app/cli/ExitStatus.hpp"
#include "app/cli/Program.hpp"
#include "app/cli/Terminal.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fmt/format.h>

namespace brevant::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TempTree;

// Runs the command in this process, with streams in memory.
Outcome runHere(const std::vector<std::string>& arguments, const CancellationFlag& cancel,
                const std::string& home = "/nonexistent-home") {
    MemoryStream out;
    MemoryStream err;
    Environment environment{.out = out.get(), .err = err.get(), .cancel = &cancel, .home = home};
    std::vector<std::string> line = {"brevant", "scan"};
    line.insert(line.end(), arguments.begin(), arguments.end());
    int status = runCommand(line, environment);
    return {status, out.text(), err.text()};
}

// Photos in two folders: three copies, a same-size stranger, a pair, a
// damaged picture, a link, an unsupported image and a package.
void makePhotos(const TempTree& tree) {
    std::string big = testing::photoOfSize(1, 1'500'000);
    tree.file("photos/2020/beach.jpg", big);
    tree.file("photos/backup/beach.jpg", big);
    tree.file("photos/backup/beach copy.jpg", big);
    tree.file("photos/2020/sunset.jpg", testing::photoOfSize(2, 1'500'000));
    std::string small = testing::photoOfSize(3, 20'000);
    tree.file("photos/2021/cat.png", small);
    tree.file("photos/2021/cat (1).png", small);
    tree.file("photos/2021/broken.jpg", "not a picture at all");
    tree.file("photos/2021/layers.psd", "8BPS");
    tree.file("photos/2021/notes.txt", "notes");
    tree.symbolicLink("beach.jpg", "photos/2020/link.jpg");
    tree.file("photos/Slides.key/Data/1.jpg", big);
}

TEST(ScanCommand, PrintsTheGroupsAndASummary) {
    TempTree tree;
    makePhotos(tree);
    std::string photos = tree.path("photos");

    Outcome run = runProgram(tree, "scan '" + photos + "'");

    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, fmt::format("identical: 3 photos\n"
                                   "  {0}/2020/beach.jpg\n"
                                   "  {0}/backup/beach copy.jpg\n"
                                   "  {0}/backup/beach.jpg\n"
                                   "identical: 2 photos\n"
                                   "  {0}/2021/cat (1).png\n"
                                   "  {0}/2021/cat.png\n"
                                   "\n"
                                   "8 pictures found, 6 examined, 2 identical groups; removing "
                                   "the extra copies would free 3.0 MB\n"
                                   "Skipped:\n"
                                   "  Image types this version does not compare: 1\n"
                                   "  Damaged or not really an image: 1\n"
                                   "  Aliases (symbolic links), not followed: 1\n"
                                   "Excluded:\n"
                                   "  Packages, which are one thing, not folders of photos: 1\n",
                                   photos));
}

TEST(ScanCommand, PrintsTheScanResultAsJson) {
    TempTree tree;
    makePhotos(tree);

    Outcome run = runProgram(tree, "scan --json '" + tree.path("photos") + "'");

    EXPECT_EQ(run.status, 0) << run.err;
    auto result = ScanResult::decode(run.out);
    ASSERT_TRUE(result.has_value()) << result.error();
    ASSERT_EQ(result->groups.size(), 2u);
    EXPECT_EQ(result->groups[0].members.size(), 3u);
    EXPECT_EQ(result->matched(), 5);
    EXPECT_FALSE(result->cancelled);
}

TEST(ScanCommand, WrongArgumentsGiveTheUsageAndStatusTwo) {
    TempTree tree;
    const std::string usage = "Usage:\n"
                              "  brevant scan [--live-photos] [--json] FOLDER...\n"
                              "Try 'brevant scan --help' for more information.\n";
    for (const auto& [arguments, message] : std::vector<std::pair<std::string, std::string>>{
             {"scan", "no folder given"},
             {"scan --json", "no folder given"},
             {"scan --jsn .", "unknown option '--jsn'"},
             {"scan . -j", "unknown option '-j'"}}) {
        SCOPED_TRACE(arguments);
        Outcome run = runProgram(tree, arguments);
        EXPECT_EQ(run.status, ExitStatus::kUsage);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, fmt::format("brevant scan: {}\n{}", message, usage));
    }
    Outcome help = runProgram(tree, "scan --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("brevant scan [--live-photos] [--json] FOLDER..."));
    Outcome overall = runProgram(tree, "--help");
    EXPECT_THAT(overall.out, HasSubstr("brevant scan [--live-photos] [--json] FOLDER..."));
    EXPECT_THAT(overall.out, HasSubstr("brevant --version"));
}

TEST(ScanCommand, ARefusedFolderIsNamedOnStandardError) {
    TempTree tree;
    Outcome run = runProgram(tree, "scan '" + tree.path("missing") + "'");
    // Nothing could be scanned, which a script must tell from nothing found.
    EXPECT_EQ(run.status, ExitStatus::kNothingScanned);
    EXPECT_EQ(run.err, "brevant: " + tree.path("missing") +
                           ": Not found. If it is on a drive, check the drive is connected.\n");
    EXPECT_THAT(run.out, HasSubstr("Chosen folders that cannot be scanned: 1\n"));
    EXPECT_THAT(run.out, StartsWith("\n0 pictures found, 0 examined, 0 identical groups; "
                                    "removing the extra copies would free 0 bytes\n"));
}

TEST(ScanCommand, ACancelledScanSaysSoAndEndsWithStatusOne) {
    TempTree tree;
    makePhotos(tree);
    CancellationFlag cancel;
    cancel.cancel();

    Outcome text = runHere({tree.path("photos")}, cancel);
    EXPECT_EQ(text.status, ExitStatus::kCancelled);
    EXPECT_THAT(text.out, ::testing::EndsWith("cancelled\n"));

    Outcome json = runHere({"--json", tree.path("photos")}, cancel);
    EXPECT_EQ(json.status, ExitStatus::kCancelled);
    auto result = ScanResult::decode(json.out);
    ASSERT_TRUE(result.has_value());
    EXPECT_TRUE(result->cancelled);
}

TEST(ScanCommand, WritesTheHomeFolderAsTilde) {
    TempTree tree;
    makePhotos(tree);
    CancellationFlag cancel;

    Outcome run = runHere({tree.path("photos/2021")}, cancel, tree.root());

    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, StartsWith("identical: 2 photos\n"
                                    "  ~/photos/2021/cat (1).png\n"
                                    "  ~/photos/2021/cat.png\n"));
}

TEST(Terminal, ShowsPathsOnOneLineWithTheHomeFolderAsTilde) {
    EXPECT_EQ(shownPath("/home/anna/Pictures/a.jpg", "/home/anna"), "~/Pictures/a.jpg");
    EXPECT_EQ(shownPath("/home/anna", "/home/anna"), "~");
    EXPECT_EQ(shownPath("/home/annabel/a.jpg", "/home/anna"), "/home/annabel/a.jpg");
    EXPECT_EQ(shownPath("/srv/a.jpg", "/"), "/srv/a.jpg");
    EXPECT_EQ(shownPath("/home/anna/two\nlines.jpg", "/home/anna"), "~/two\\nlines.jpg");
    EXPECT_EQ(shownPath("/home/anna/\xff.jpg", "/home/anna"), "~/\\xFF.jpg");
}

TEST(Terminal, WritesByteCountsInDecimalUnits) {
    EXPECT_EQ(humanBytes(0), "0 bytes");
    EXPECT_EQ(humanBytes(1), "1 byte");
    EXPECT_EQ(humanBytes(999), "999 bytes");
    EXPECT_EQ(humanBytes(1'000), "1.0 kB");
    EXPECT_EQ(humanBytes(12'345'678), "12.3 MB");
    EXPECT_EQ(humanBytes(999'960), "1.0 MB");
    EXPECT_EQ(humanBytes(4'000'000'000), "4.0 GB");
}

} // namespace
} // namespace brevant::cli
