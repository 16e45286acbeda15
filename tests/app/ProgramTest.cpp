#include "app/cli/Program.hpp"

#include "tests/app/ProgramRun.hpp"
#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "app/cli/Commands.hpp"
#include "app/cli/DesktopStart.hpp"
#include "app/cli/ExitStatus.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace brevant::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TempTree;

// `brevant` run without a display (and with what else the prefix sets).
Outcome runWithout(const TempTree& tree, const std::string& variables,
                   const std::string& program = BREVANT_BINARY, const std::string& arguments = "") {
    return runCaptured(tree, fmt::format("env -u DISPLAY -u WAYLAND_DISPLAY {} '{}' {}", variables,
                                         program, arguments));
}

// The program linked into a folder of the tree, so that what lies beside
// it is up to the test.
std::string programIn(const TempTree& tree, std::string_view folder) {
    std::string path = tree.folder(folder) + "/brevant";
    std::error_code error;
    std::filesystem::create_hard_link(BREVANT_BINARY, path, error);
    if (error) {
        std::filesystem::copy_file(BREVANT_BINARY, path, error);
    }
    return path;
}

// A window program stand-in that says how it was started.
void windowProgram(const TempTree& tree, std::string_view folder, std::string_view script) {
    std::string path = tree.file(std::string(folder) + "/" + std::string(DesktopStart::kProgram),
                                 std::string(script));
    std::error_code error;
    std::filesystem::permissions(path, std::filesystem::perms::owner_all, error);
}

constexpr std::string_view kWindow = "#!/bin/sh\necho \"window $0 $#\"\n";

TEST(Program, EveryCommandHasItsHelp) {
    TempTree tree;
    auto commands = makeCommands();
    ASSERT_FALSE(commands.empty());
    for (const auto& command : commands) {
        for (std::string flag : {"--help", "-h"}) {
            SCOPED_TRACE(std::string(command->name()) + " " + flag);
            Outcome help = runProgram(tree, std::string(command->name()) + " " + flag);
            EXPECT_EQ(help.status, 0);
            EXPECT_EQ(help.err, "");
            EXPECT_THAT(help.out, HasSubstr("Usage:\n  " + command->synopsis().front() + "\n"));
            EXPECT_THAT(help.out, HasSubstr("  -h,--help"));
        }
    }
    Outcome version = runProgram(tree, "--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, fmt::format("brevant {}\n", BREVANT_VERSION));
}

TEST(Program, BadArgumentsSayWhatIsWrongOnStandardErrorOnly) {
    TempTree tree;
    Outcome unknown = runProgram(tree, "--frobnicate");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.out, "");
    EXPECT_THAT(unknown.err, StartsWith("brevant: unknown option '--frobnicate'\nUsage:\n"));
    EXPECT_THAT(unknown.err, HasSubstr("Try 'brevant --help' for more information.\n"));

    Outcome command = runProgram(tree, "sacn .");
    EXPECT_EQ(command.status, ExitStatus::kUsage);
    EXPECT_EQ(command.out, "");
    EXPECT_THAT(command.err, StartsWith("brevant: unknown command 'sacn'\n"));
}

TEST(Program, AScanOfOnlyRefusedFoldersEndsWithItsOwnStatus) {
    TempTree tree;
    tree.file("photos/a.jpg", "not a picture");
    tree.file("file.txt", "text");
    Outcome refused = runProgram(
        tree, fmt::format("scan '{}' '{}'", tree.path("missing"), tree.path("file.txt")));
    // The documented number, which scripts test for.
    EXPECT_EQ(refused.status, 3);
    EXPECT_THAT(refused.err, HasSubstr("brevant: " + tree.path("missing") + ": Not found."));
    EXPECT_THAT(refused.err, HasSubstr("brevant: " + tree.path("file.txt") + ": "));

    // One usable folder is enough for a scan, even one that finds nothing.
    Outcome partly =
        runProgram(tree, fmt::format("scan '{}' '{}'", tree.path("missing"), tree.path("photos")));
    EXPECT_EQ(partly.status, ExitStatus::kSuccess);
    Outcome empty = runProgram(tree, fmt::format("scan --json '{}'", tree.folder("empty")));
    EXPECT_EQ(empty.status, ExitStatus::kSuccess);
    EXPECT_EQ(empty.err, "");
}

TEST(Program, TheReportIsAskedForBeforeAnythingButACommand) {
    TempTree tree;
    std::string missing = tree.path("missing");
    // Wherever --similar or --series stands, it wins over help and options
    // brevant would refuse; a command's name after it is a folder.
    for (const std::string& arguments :
         {"--help --series '" + missing + "'", "--frobnicate --series '" + missing + "' -v",
          "--series '" + missing + "' scan", "'" + missing + "' --series"}) {
        SCOPED_TRACE(arguments);
        Outcome run = runProgram(tree, arguments);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, "\n0 pictures measured, 0 close pairs, 0 series\n");
    }
    Outcome similar = runProgram(tree, "--series x --similar broad '" + missing + "'");
    EXPECT_EQ(similar.status, 0);
    EXPECT_EQ(similar.out, "\n0 pictures measured, 0 close pairs, 0 similar groups at Broad\n");

    // A line that starts with a command is that command's, whose own
    // options may be called --similar or --series.
    Outcome scan = runProgram(tree, "scan --series '" + missing + "'");
    EXPECT_EQ(scan.status, 2);
    EXPECT_EQ(scan.out, "");
    EXPECT_THAT(scan.err, StartsWith("brevant scan: unknown option '--series'\n"));
}

// Wherever --similar stands its preset may be left out (Balanced), and the
// word after it is a preset by the report's one rule: only an exact preset
// name is one, so a folder called "broad" is written "./broad" or follows
// the preset.
TEST(Program, EveryCommandTakesTheSimilarPresetAsOptional) {
    TempTree tree;
    std::string photo = testing::photoOfSize(31, 20'000);
    std::string a = tree.file("broad/a.jpg", photo);
    std::string b = tree.file("broad/b.jpg", photo);
    {
        testing::LightroomCatalogFixture catalog(tree.path("Family.lrcat"));
        catalog.addPhotoAt(a);
        catalog.addPhotoAt(b);
        catalog.close();
    }

    struct Case {
        std::string arguments;
        std::string shows;
    };

    const std::vector<Case> cases{
        {"--similar ./broad", "1 similar groups at Balanced\n"},
        {"--similar broad broad", "1 similar groups at Broad\n"},
        {"catalog scan --similar Family.lrcat", "1 similar group at Balanced\n"},
        {"catalog scan --similar broad Family.lrcat", "1 similar group at Broad\n"},
        {"catalog scan Family.lrcat --similar", "1 similar group at Balanced\n"},
        {"clean --similar ./broad --dry-run --json", "\"similar\""},
        {"clean --similar --dry-run --json broad", "\"similar\""},
        {"clean --similar broad broad --dry-run --json", "\"similar\""},
    };
    for (const auto& [arguments, shows] : cases) {
        SCOPED_TRACE(arguments);
        Outcome run =
            runCaptured(tree, fmt::format("cd '{}' && BREVANT_DATA_DIR='{}' '{}' {}", tree.root(),
                                          tree.path("data"), BREVANT_BINARY, arguments));
        EXPECT_EQ(run.status, ExitStatus::kSuccess) << run.err;
        EXPECT_THAT(run.out, HasSubstr(shows));
    }

    // A preset is named exactly or not at all.
    Outcome wrong = runProgram(tree, "clean --similar=wide '" + tree.path("broad") + "'");
    EXPECT_EQ(wrong.status, ExitStatus::kUsage);
    EXPECT_THAT(wrong.err, HasSubstr("--similar: wide not in {conservative,balanced,broad}"));
}

TEST(Program, WithoutArgumentsOrDisplayPrintsTheUsage) {
    TempTree tree;
    Outcome help = runProgram(tree, "--help");
    Outcome bare = runWithout(tree, "");
    EXPECT_EQ(bare.status, 0);
    EXPECT_EQ(bare.err, "");
    EXPECT_EQ(bare.out, help.out);
    EXPECT_THAT(bare.out, HasSubstr("  brevant scan [--live-photos] [--json] FOLDER...\n"));

    // A window program beside it changes nothing without a display.
    std::string program = programIn(tree, "bin");
    windowProgram(tree, "bin", kWindow);
    EXPECT_EQ(runWithout(tree, "", program).out, help.out);
    // Nor does a display without a window program anywhere.
    std::string lonely = programIn(tree, "lonely");
    EXPECT_EQ(runWithout(tree, "DISPLAY=:0 PATH=" + tree.folder("empty"), lonely).out, help.out);
}

TEST(Program, WithoutArgumentsOnADisplayStartsTheWindowProgram) {
    TempTree tree;
    std::string program = programIn(tree, "bin");
    windowProgram(tree, "bin", kWindow);
    std::string beside = tree.path("bin/brevant-desktop");
    Outcome x11 = runWithout(tree, "DISPLAY=:0", program);
    EXPECT_EQ(x11.status, 0);
    EXPECT_EQ(x11.out, "window " + beside + " 0\n");
    Outcome wayland = runWithout(tree, "WAYLAND_DISPLAY=wayland-0", program);
    EXPECT_EQ(wayland.out, "window " + beside + " 0\n");

    // Not beside it: found on the PATH.
    std::string alone = programIn(tree, "alone");
    windowProgram(tree, "path", kWindow);
    Outcome onPath = runWithout(tree, "DISPLAY=:0 PATH=/nonexistent:" + tree.path("path"), alone);
    EXPECT_EQ(onPath.out, "window " + tree.path("path/brevant-desktop") + " 0\n");

    // One that cannot be started is reported, with the failure status.
    std::string broken = programIn(tree, "broken");
    windowProgram(tree, "broken", "#!/nonexistent/interpreter\n");
    Outcome failed = runWithout(tree, "DISPLAY=:0", broken);
    EXPECT_EQ(failed.status, ExitStatus::kFailed);
    EXPECT_EQ(failed.out, "");
    EXPECT_EQ(failed.err, "brevant: cannot start " + tree.path("broken/brevant-desktop") +
                              ": No such file or directory\n");
}

} // namespace
} // namespace brevant::cli
