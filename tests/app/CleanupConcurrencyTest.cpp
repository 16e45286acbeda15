// Cleanups as real machines run them: two at once, a look at the history
// while one runs, a damaged lock file, driven through the built program in
// real processes.

#include "tests/app/ProgramRun.hpp"
#include "tests/cleanup/CleanupFixtures.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "app/cli/ExitStatus.hpp"
#include "engine/cleanup/CleanupExecutor.hpp"
#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/platform/DataFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

namespace brevant::cli {
namespace {

// The ASSERTs before each access guard these optionals and expecteds.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using ::testing::HasSubstr;
using ::testing::Not;
using testing::TempTree;
using Json = nlohmann::json;

std::string shellWord(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

// The program with the tree's own data folder, Trash and settings.
std::string program(const TempTree& tree) {
    return fmt::format("BREVANT_DATA_DIR={} XDG_DATA_HOME={} XDG_CONFIG_HOME={} {}",
                       shellWord(tree.path("data")), shellWord(tree.path("xdg")),
                       shellWord(tree.path("config")), shellWord(BREVANT_BINARY));
}

// `pairs` pictures, each in a/ and b/ with the same bytes and bytes of its own.
void makePairs(const TempTree& tree, int pairs) {
    for (int i = 0; i < pairs; ++i) {
        std::string bytes = brevant::testing::photoOfSize(static_cast<unsigned>(i + 1), 20'000);
        tree.file(fmt::format("L/a/{}.jpg", i), bytes);
        tree.file(fmt::format("L/b/{}.jpg", i), bytes);
    }
}

TEST(CleanupConcurrency, TwoCleanupsKeepingOppositeCopiesNeverLeaveAPhotoWithoutOne) {
    constexpr int kRounds = 6;
    constexpr int kPairs = 24;
    for (int round = 0; round < kRounds; ++round) {
        SCOPED_TRACE(fmt::format("round {}", round));
        TempTree tree;
        makePairs(tree, kPairs);
        std::string library = tree.path("L");
        // Each keeps the copies the other moves.
        std::string both = fmt::format(
            "{0} clean --yes --protect {1}/a {1} >{2}/one.txt 2>&1 & "
            "{0} clean --yes --protect {1}/b {1} >{2}/two.txt 2>&1 & "
            "wait %1; first=$?; wait %2; second=$?; echo $first $second >{2}/status.txt",
            program(tree), shellWord(library), shellWord(tree.root()));
        ASSERT_EQ(brevant::testing::runCommand(both), 0);
        EXPECT_EQ(brevant::testing::readFile(tree.path("status.txt")), "0 0\n")
            << brevant::testing::readFile(tree.path("one.txt"))
            << brevant::testing::readFile(tree.path("two.txt"));

        int inPlace = 0;
        for (int i = 0; i < kPairs; ++i) {
            bool a = std::filesystem::exists(tree.path(fmt::format("L/a/{}.jpg", i)));
            bool b = std::filesystem::exists(tree.path(fmt::format("L/b/{}.jpg", i)));
            EXPECT_TRUE(a || b) << "photo " << i << " has no copy left in place";
            inPlace += (a ? 1 : 0) + (b ? 1 : 0);
        }
        // The first run moved one copy of each; the second found its kept
        // copies gone and moved nothing.
        EXPECT_EQ(inPlace, kPairs);
        std::error_code error;
        auto inTrash =
            std::distance(std::filesystem::directory_iterator(tree.path("xdg/Trash/files"), error),
                          std::filesystem::directory_iterator{});
        EXPECT_EQ(inTrash, kPairs);
    }
}

// Holds its first move until the parent lets it go.
class HeldTrasher final : public Trasher {
public:
    HeldTrasher(int entered, int release)
        : entered_(entered)
        , release_(release) {}

    [[nodiscard]] std::expected<std::string, TrashError>
    reserve(const std::string& path) const override {
        return FileManagerTrasher().reserve(path);
    }

    [[nodiscard]] std::expected<void, TrashError>
    moveInto(const std::string& path, const std::string& trashPath) const override {
        char byte = 'x';
        (void)::write(entered_, &byte, 1);
        (void)::read(release_, &byte, 1);
        return FileManagerTrasher().moveInto(path, trashPath);
    }

    [[nodiscard]] std::expected<void, TrashError>
    putBack(const std::string& trashPath, const std::string& destination) const override {
        return FileManagerTrasher().putBack(trashPath, destination);
    }

private:
    int entered_;
    int release_;
};

TEST(CleanupConcurrency, HistoryDuringARunningCleanupSaysRunningAndChangesNoJournal) {
    TempTree tree;
    makePairs(tree, 2);
    brevant::testing::ScopedEnvironment trashHome("XDG_DATA_HOME", tree.path("xdg"));
    platform::DataFolder data{tree.path("data")};
    std::string a0 = tree.path("L/a/0.jpg");
    std::string a1 = tree.path("L/a/1.jpg");
    CleanupPlan plan = brevant::testing::planOf(
        {brevant::testing::removalOf(a0, tree.path("L/b/0.jpg"), tree.path("L")),
         brevant::testing::removalOf(a1, tree.path("L/b/1.jpg"), tree.path("L"))},
        {tree.path("L")});
    std::array<int, 2> entered{};
    std::array<int, 2> release{};
    ASSERT_EQ(::pipe(entered.data()), 0);
    ASSERT_EQ(::pipe(release.data()), 0);

    pid_t cleanup = ::fork();
    ASSERT_GE(cleanup, 0);
    if (cleanup == 0) {
        // The running cleanup, in a process of its own.
        CancellationFlag cancel;
        auto trasher = std::make_shared<HeldTrasher>(entered[1], release[0]);
        auto report = CleanupExecutor(data, trasher)
                          .execute(plan, CleanupApproval{plan.id, Date::now()}, cancel);
        ::_exit(report && report->moved() == 2 ? 0 : 1);
    }
    char byte = 0;
    ASSERT_EQ(::read(entered[0], &byte, 1), 1);
    std::string journal = CleanupJournal::pathFor(plan.id, data.cleanups());
    std::string before = brevant::testing::readFile(journal);

    Outcome history = runCaptured(tree, program(tree) + " history --json");
    EXPECT_EQ(history.status, ExitStatus::kSuccess) << history.err;
    Json listed = Json::parse(history.out);
    EXPECT_TRUE(listed["recovered"].empty());
    ASSERT_EQ(listed["cleanups"].size(), 1U);
    EXPECT_EQ(listed["cleanups"][0]["running"], true);
    Outcome text = runCaptured(tree, program(tree) + " history");
    EXPECT_THAT(text.out, HasSubstr("(running now)"));
    // A Put Back waits for it, saying for whom, and a Ctrl-C while it waits
    // leaves with nothing changed.
    Outcome waiting =
        runCaptured(tree, "timeout --preserve-status -s INT 1.5 env " + program(tree) +
                              " restore " + plan.id.text() + " --all");
    EXPECT_EQ(waiting.status, ExitStatus::kFailed);
    EXPECT_THAT(waiting.err, HasSubstr(fmt::format("Waiting for another Brevant run to finish: "
                                                   "brevant_tests (process {})\u2026\n",
                                                   cleanup)));
    EXPECT_THAT(waiting.err, HasSubstr("brevant restore: Another Brevant run is changing "
                                       "pictures or Brevant\u2019s records"));
    EXPECT_EQ(brevant::testing::readFile(journal), before);

    ASSERT_EQ(::write(release[1], "gg", 2), 2);
    int status = -1;
    ASSERT_EQ(::waitpid(cleanup, &status, 0), cleanup);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    // Once it is done, history reads it as finished, and nothing was
    // reconciled behind its back.
    Outcome after = runCaptured(tree, program(tree) + " history --json");
    Json done = Json::parse(after.out);
    EXPECT_EQ(done["cleanups"][0]["running"], false);
    EXPECT_EQ(done["cleanups"][0]["moved"], 2);
    EXPECT_THAT(brevant::testing::readFile(journal), Not(HasSubstr("Not attempted")));
    for (int fd : {entered[0], entered[1], release[0], release[1]}) {
        ::close(fd);
    }
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant::cli
