#include "tests/app/ProgramRun.hpp"
#include "tests/fixtures/LivePhotoFixtures.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/fixtures/TrashCli.hpp"

#include "app/cli/ExitStatus.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fmt/format.h>
#include <string>
#include <string_view>

namespace brevant::cli {
namespace {

// The journal the run's "brevant restore ID --all" line names; empty when
// the output has no such line.
std::string restoreId(const std::string& out) {
    constexpr std::string_view kCommand = "brevant restore ";
    std::size_t start = out.find(kCommand);
    if (start == std::string::npos) {
        return {};
    }
    start += kCommand.size();
    std::size_t end = out.find(" --all", start);
    if (end == std::string::npos) {
        return {};
    }
    return out.substr(start, end - start);
}

using ::testing::HasSubstr;
using ::testing::Not;
namespace fs = std::filesystem;

// A folder with one Live Photo and one photo beside a video of its own
// name, its own data folder and Trash, driven through the built program.
class LiveAlbum {
public:
    LiveAlbum()
        : dataHome_("XDG_DATA_HOME", tree_.folder("xdg")) {
        pair_ = testing::writeLivePair(tree_.folder("photos"),
                                       {.photoIdentifier = "5C1E1F9A-0B0B-4F4F-9A9A-1D1D1D1D1D1D",
                                        .movieIdentifier = "5C1E1F9A-0B0B-4F4F-9A9A-1D1D1D1D1D1D"});
        (void)testing::writeLivePair(tree_.path("photos"), {.movieFrames = 250,
                                                            .photoName = "IMG_0002.JPG",
                                                            .movieName = "IMG_0002.MOV",
                                                            .seed = 2});
        movieBytes_ = testing::readFile(pair_.movie);
    }

    [[nodiscard]] const testing::LivePair& pair() const { return pair_; }

    [[nodiscard]] const std::string& movieBytes() const { return movieBytes_; }

    [[nodiscard]] std::string path(std::string_view relative) const { return tree_.path(relative); }

    [[nodiscard]] std::string folder() const { return "'" + tree_.path("photos") + "'"; }

    [[nodiscard]] std::string trashed(std::string_view name) const {
        return tree_.path("xdg/Trash/files/" + std::string(name));
    }

    [[nodiscard]] std::string trashInfo(std::string_view name) const {
        return tree_.path("xdg/Trash/info/" + std::string(name) + ".trashinfo");
    }

    [[nodiscard]] Outcome brevant(const std::string& arguments) const {
        return runCaptured(tree_, fmt::format("BREVANT_DATA_DIR='{}' XDG_DATA_HOME='{}' TZ=UTC "
                                              "'{}' {} </dev/null",
                                              tree_.path("data"), tree_.path("xdg"), BREVANT_BINARY,
                                              arguments));
    }

private:
    testing::TempTree tree_;
    testing::ScopedEnvironment dataHome_;
    testing::LivePair pair_;
    std::string movieBytes_;
};

TEST(LivePhotosCommand, ScanListsThePairUnderItsHeadingAndChangesNothing) {
    LiveAlbum album;
    Outcome scan = album.brevant("scan --live-photos " + album.folder());
    ASSERT_EQ(scan.status, ExitStatus::kSuccess) << scan.err;
    EXPECT_THAT(scan.out, HasSubstr(fmt::format("liveMovie: 2 photos\n  {}\n  {}\n",
                                                album.pair().photo, album.pair().movie)));
    EXPECT_THAT(scan.out, Not(HasSubstr("IMG_0002.MOV")));
    EXPECT_THAT(scan.out, HasSubstr("2 pictures found, 2 examined, 1 Live Photo movie; moving "
                                    "their movies to the Trash would free"));
    EXPECT_EQ(testing::readFile(album.pair().movie), album.movieBytes());
}

TEST(LivePhotosCommand, CleanMovesTheMovieToTheTrashAndRestoreBringsItBack) {
    LiveAlbum album;
    Outcome dry = album.brevant("clean --live-photos --dry-run " + album.folder());
    ASSERT_EQ(dry.status, ExitStatus::kSuccess) << dry.err;
    EXPECT_THAT(dry.out, HasSubstr("liveMovie: 2 copies, 1 to move"));
    EXPECT_THAT(dry.out, HasSubstr("move  " + album.pair().movie));
    EXPECT_THAT(dry.out,
                HasSubstr("keep  " + album.pair().photo + "  (It cannot be moved on its own)"));
    EXPECT_THAT(dry.out, HasSubstr("Dry run: nothing was moved."));
    EXPECT_TRUE(fs::exists(album.pair().movie));

    Outcome run = album.brevant("clean --live-photos --yes " + album.folder());
    ASSERT_EQ(run.status, ExitStatus::kSuccess) << run.out << run.err;
    EXPECT_FALSE(fs::exists(album.pair().movie));
    EXPECT_TRUE(fs::exists(album.pair().photo));
    EXPECT_TRUE(fs::exists(album.trashInfo("IMG_0001.MOV")));
    EXPECT_EQ(testing::readFile(album.trashed("IMG_0001.MOV")), album.movieBytes());
    if (!testing::trashCliMissing()) {
        EXPECT_THAT(testing::trashList(), HasSubstr(" " + album.pair().movie + "\n"));
    }

    std::string id = restoreId(run.out);
    ASSERT_FALSE(id.empty()) << run.out;
    Outcome restore = album.brevant(fmt::format("restore {} --all", id));
    ASSERT_EQ(restore.status, ExitStatus::kSuccess) << restore.out << restore.err;
    EXPECT_EQ(testing::readFile(album.pair().movie), album.movieBytes());
    EXPECT_FALSE(fs::exists(album.trashInfo("IMG_0001.MOV")));
}

TEST(LivePhotosCommand, LivePhotosExcludesTheOtherModes) {
    LiveAlbum album;
    Outcome both = album.brevant("clean --live-photos --series " + album.folder());
    EXPECT_EQ(both.status, ExitStatus::kUsage);
    EXPECT_EQ(both.out, "");
    EXPECT_TRUE(fs::exists(album.pair().movie));
}

TEST(LivePhotosCommand, CompressMakesMotionPhotosStillsAndPutsTheOriginalBack) {
    LiveAlbum album;
    std::string photo = testing::writeMotionPhoto(album.path("photos/PXL_0001.jpg"),
                                                  testing::MotionStyle::motionPhoto);
    std::string bytes = testing::readFile(photo);
    std::string still = album.path("photos/PXL_0001 (still).jpg");

    Outcome dry = album.brevant("compress --motion-photos --dry-run " + album.folder());
    ASSERT_EQ(dry.status, ExitStatus::kSuccess) << dry.err;
    EXPECT_THAT(dry.out, HasSubstr(photo + "  motion photo 240\u00d7320"));
    // Only the motion photo: not the Live Photo's JPEGs nor its movies.
    EXPECT_THAT(dry.out, Not(HasSubstr("IMG_0001")));
    EXPECT_FALSE(fs::exists(still));

    Outcome run = album.brevant("compress --motion-photos --yes " + album.folder());
    ASSERT_EQ(run.status, ExitStatus::kSuccess) << run.out << run.err;
    EXPECT_TRUE(fs::exists(still));
    EXPECT_FALSE(fs::exists(photo));
    EXPECT_EQ(testing::readFile(album.trashed("PXL_0001.jpg")), bytes);
    EXPECT_TRUE(fs::exists(album.trashInfo("PXL_0001.jpg")));

    std::string id = restoreId(run.out);
    ASSERT_FALSE(id.empty()) << run.out;
    Outcome restore = album.brevant(fmt::format("restore {} --all", id));
    ASSERT_EQ(restore.status, ExitStatus::kSuccess) << restore.out << restore.err;
    EXPECT_EQ(testing::readFile(photo), bytes);
    EXPECT_FALSE(fs::exists(still));
}

} // namespace
} // namespace brevant::cli
