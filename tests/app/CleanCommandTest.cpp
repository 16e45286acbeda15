#include "tests/app/ProgramRun.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/fixtures/TrashCli.hpp"
#include "tests/scan/ScanFixtures.hpp"

#include "app/cli/ExitStatus.hpp"
#include "app/cli/Program.hpp"
#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/review/ReviewStore.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>

namespace brevant::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::TempTree;
using Json = nlohmann::json;
namespace fs = std::filesystem;

// A library of photos with its own data folder, Trash and settings, driven
// through the built program as a person would.
class Library {
public:
    Library()
        : dataHome_("XDG_DATA_HOME", tree_.folder("xdg")) {
        tree_.folder("config");
        std::string beach = testing::photoOfSize(1, 300'000);
        file("2020/beach.jpg", beach);
        file("backup/beach.jpg", beach);
        file("backup/beach copy.jpg", beach);
        std::string cat = testing::photoOfSize(2, 40'000);
        file("2021/cat.png", cat);
        file("2021/cat (1).png", cat);
        std::string dog = testing::photoOfSize(3, 50'000);
        file("2022/dog.jpg", dog);
        file("keep/dog.jpg", dog);
        std::string tree = testing::photoOfSize(4, 60'000);
        file("2023/tree.jpg", tree);
        file("2023/tree copy.jpg", tree);
        file("2023/alone.jpg", testing::photoOfSize(5, 70'000));
    }

    [[nodiscard]] std::string photo(std::string_view relative) const {
        return tree_.path("photos/" + std::string(relative));
    }

    [[nodiscard]] std::string photos() const { return tree_.path("photos"); }

    [[nodiscard]] std::string data() const { return tree_.path("data"); }

    [[nodiscard]] const TempTree& tree() const { return tree_; }

    // The program with the arguments (shell words), reading `input`.
    [[nodiscard]] Outcome brevant(const std::string& arguments,
                                  const std::string& input = "/dev/null") const {
        return runCaptured(tree_, fmt::format("BREVANT_DATA_DIR='{}' XDG_DATA_HOME='{}' "
                                              "XDG_CONFIG_HOME='{}' TZ=UTC '{}' {} <'{}'",
                                              data(), tree_.path("xdg"), tree_.path("config"),
                                              BREVANT_BINARY, arguments, input));
    }

    // Every picture of the library with its bytes, by path below photos/.
    [[nodiscard]] std::map<std::string, std::string> contents() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(photos())) {
            if (entry.is_regular_file()) {
                files[fs::relative(entry.path(), photos()).string()] =
                    testing::readFile(entry.path().string());
            }
        }
        return files;
    }

    // The journals written so far.
    [[nodiscard]] std::vector<std::string> journals() const {
        std::vector<std::string> found;
        if (fs::exists(data() + "/Cleanups")) {
            for (const auto& entry : fs::directory_iterator(data() + "/Cleanups")) {
                found.push_back(entry.path().string());
            }
        }
        return found;
    }

private:
    // Each copy a second after the one before: a coarse file-system clock can
    // give copies written in one tick the same time, and then the names
    // would choose the keeper instead of the age the test expects.
    void file(std::string_view relative, std::string_view bytes) {
        std::string path = tree_.file("photos/" + std::string(relative), bytes);
        fs::last_write_time(path, firstWritten_ + std::chrono::seconds(written_++));
    }

    TempTree tree_;
    testing::ScopedEnvironment dataHome_;
    fs::file_time_type firstWritten_ = fs::file_time_type::clock::now() - std::chrono::hours(24);
    int written_ = 0;
};

std::string shellWord(const std::string& path) {
    return "'" + path + "'";
}

// The paths `clean --json` planned to move.
std::vector<std::string> plannedMoves(const Json& document) {
    std::vector<std::string> moves;
    for (const auto& group : document["plan"]["groups"]) {
        for (const auto& copy : group["move"]) {
            moves.push_back(copy["path"]);
        }
    }
    std::ranges::sort(moves);
    return moves;
}

TEST(CleanCommand, MovesTheSuggestedCopiesKeepsLockedAndProtectedOnesAndPutsThemBack) {
    if (auto missing = testing::trashCliMissing()) {
        GTEST_SKIP() << *missing;
    }
    Library library;
    auto before = library.contents();
    std::string photos = shellWord(library.photos());
    std::string protect = "--protect " + shellWord(library.photo("keep"));

    Outcome locked = library.brevant("lock " + shellWord(library.photo("2023/tree copy.jpg")));
    ASSERT_EQ(locked.status, ExitStatus::kSuccess) << locked.err;
    EXPECT_EQ(locked.out, "Locked: " + library.photo("2023/tree copy.jpg") + "\n");

    Outcome dry = library.brevant("clean --dry-run " + protect + " " + photos);
    EXPECT_EQ(dry.status, ExitStatus::kSuccess) << dry.err;
    EXPECT_THAT(dry.out, HasSubstr("5 pictures to move to the Trash, 750.0 kB\n"
                                   "Dry run: nothing was moved.\n"));
    EXPECT_THAT(dry.out, HasSubstr("  keep  " + library.photo("2023/tree copy.jpg") +
                                   "  (You locked this copy)\n"));
    EXPECT_THAT(dry.out, HasSubstr("  keep  " + library.photo("keep/dog.jpg")));
    Outcome unasked = library.brevant("clean " + protect + " " + photos);
    EXPECT_EQ(unasked.status, ExitStatus::kCancelled);
    EXPECT_THAT(unasked.out, HasSubstr("Nothing was moved: there is no terminal to ask on, and "
                                       "--yes was not given.\n"));
    EXPECT_EQ(library.contents(), before);
    EXPECT_THAT(library.journals(), IsEmpty());

    Outcome clean = library.brevant("clean --yes --json " + protect + " " + photos);
    ASSERT_EQ(clean.status, ExitStatus::kSuccess) << clean.err;
    Json document = Json::parse(clean.out);
    std::vector<std::string> moved = plannedMoves(document);
    EXPECT_THAT(moved,
                ElementsAre(library.photo("2021/cat (1).png"), library.photo("2022/dog.jpg"),
                            library.photo("2023/tree.jpg"), library.photo("backup/beach copy.jpg"),
                            library.photo("backup/beach.jpg")));
    EXPECT_EQ(document["plan"]["pictures"], 5);
    EXPECT_EQ(document["moved"], true);
    EXPECT_EQ(document["report"]["items"].size(), 5U);
    std::string id = document["plan"]["id"];
    EXPECT_EQ(document["message"], "To put them back: brevant restore " + id + " --all");

    // Exactly the planned copies left, and one copy of each picture stayed.
    auto after = library.contents();
    EXPECT_EQ(after.size(), before.size() - 5);
    for (const auto& path : moved) {
        EXPECT_FALSE(fs::exists(path)) << path;
    }
    for (const char* kept : {"2020/beach.jpg", "2021/cat.png", "keep/dog.jpg", "2023/tree copy.jpg",
                             "2023/alone.jpg"}) {
        EXPECT_EQ(after[kept], before[kept]) << kept;
    }
    std::string trashed = testing::trashList();
    for (const auto& path : moved) {
        EXPECT_THAT(trashed, HasSubstr(" " + path + "\n"));
    }

    Outcome again = library.brevant("clean --yes " + protect + " " + photos);
    EXPECT_EQ(again.status, ExitStatus::kSuccess);
    EXPECT_EQ(again.out, "No extra copies found: nothing to clean up.\n");

    Outcome history = library.brevant("history");
    EXPECT_EQ(history.status, ExitStatus::kSuccess);
    EXPECT_THAT(history.out,
                HasSubstr(id + "  5 pictures: 5 moved, 0 skipped, 0 failed, 0 unknown; 750.0 kB "
                               "in the Trash\n"));
    Outcome one = library.brevant("history " + id.substr(0, 8));
    EXPECT_THAT(one.out, HasSubstr("Cleanup finished\n  moved     " +
                                   library.photo("backup/beach copy.jpg") + "\n"));

    Outcome restore = library.brevant("restore " + id + " --all");
    EXPECT_EQ(restore.status, ExitStatus::kSuccess) << restore.err;
    EXPECT_THAT(restore.out, HasSubstr("beach copy.jpg is back, at " +
                                       library.photo("backup/beach copy.jpg") + ".\n"));
    EXPECT_EQ(library.contents(), before);
    EXPECT_EQ(testing::trashList(), "");
    Outcome listed = library.brevant("history --json");
    EXPECT_EQ(Json::parse(listed.out)["cleanups"][0]["restored"], 5);
}

TEST(CleanCommand, AsksBeforeMovingAndANoMovesNothing) {
    Library library;
    auto before = library.contents();
    std::string answers = library.tree().file("answers.txt", "n\n");
    testing::ScopedEnvironment data("BREVANT_DATA_DIR", library.data());
    MemoryStream out;
    MemoryStream err;
    std::FILE* in = std::fopen(answers.c_str(), "r");
    CancellationFlag cancel;
    Environment environment{
        .out = out.get(), .err = err.get(), .in = in, .cancel = &cancel, .interactive = true};

    int status = runCommand({"brevant", "clean", library.photos()}, environment);
    std::fclose(in);

    EXPECT_EQ(status, ExitStatus::kCancelled);
    EXPECT_THAT(err.text(), HasSubstr("Move 5 pictures (750.0 kB) to the Trash? [y/N] "));
    EXPECT_THAT(out.text(), HasSubstr("Nothing was moved.\n"));
    EXPECT_EQ(library.contents(), before);
    EXPECT_THAT(library.journals(), IsEmpty());

    cancel.cancel();
    EXPECT_EQ(runCommand({"brevant", "clean", "--yes", library.photos()}, environment),
              ExitStatus::kCancelled);
    EXPECT_EQ(library.contents(), before);
}

TEST(CleanCommand, RefusesBadArgumentsAndMissingFoldersWithoutChangingAnything) {
    Library library;
    auto before = library.contents();
    std::string photos = shellWord(library.photos());

    struct Case {
        std::string arguments;
        int status;
        std::string message;
    };

    std::vector<Case> cases{
        {"clean", ExitStatus::kUsage, "brevant clean: no folder given\n"},
        {"clean --similar=wide " + photos, ExitStatus::kUsage, "wide not in"},
        {"clean --series --similar broad " + photos, ExitStatus::kUsage, "excludes"},
        {"clean --protect " + shellWord(library.photo("missing")) + " --yes " + photos,
         ExitStatus::kUsage, "no such folder: " + library.photo("missing")},
        {"clean --priorities mostPixels,prettiest --yes " + photos, ExitStatus::kUsage,
         "unknown priority 'prettiest' (choose from mostPixels, largestFile,"},
        {"clean --yes " + shellWord(library.photo("missing")), ExitStatus::kNothingScanned,
         "brevant: " + library.photo("missing") + ": "},
        {"restore", ExitStatus::kUsage, "no cleanup id given"},
        {"restore 12345678", ExitStatus::kUsage, "name the pictures to put back, or --all"},
        {"restore 12345678 --all", ExitStatus::kUsage, "no cleanup has the id 12345678"},
        {"history 12345678", ExitStatus::kUsage, "no cleanup has the id 12345678"},
        {"lock " + shellWord(library.photo("2020/beach.jpg")) + " " +
             shellWord(library.photo("2020")),
         ExitStatus::kUsage, "2020: not a file"},
        {"lock " + shellWord(library.photo("nothing.jpg")), ExitStatus::kUsage, "no such file"},
    };
    for (const auto& [arguments, status, message] : cases) {
        Outcome run = library.brevant(arguments);
        EXPECT_EQ(run.status, status) << arguments;
        EXPECT_THAT(run.err, HasSubstr(message)) << arguments;
    }
    EXPECT_EQ(library.contents(), before);
    EXPECT_THAT(library.journals(), IsEmpty());
    EXPECT_EQ(library.brevant("locks").out, "No copy is locked.\n");
}

TEST(CleanCommand, PutsAnOccupiedPictureBackBesideItNeverOverIt) {
    Library library;
    std::string original = library.contents()["backup/beach.jpg"];
    Outcome clean = library.brevant("clean --yes --json " + shellWord(library.photos()));
    ASSERT_EQ(clean.status, ExitStatus::kSuccess) << clean.err;
    std::string id = Json::parse(clean.out)["plan"]["id"];
    std::string place = library.photo("backup/beach.jpg");
    library.tree().file("photos/backup/beach.jpg", "a newer file");

    Outcome refused = library.brevant("restore " + id + " " + shellWord(place));
    EXPECT_EQ(refused.status, ExitStatus::kFailed);
    EXPECT_THAT(refused.out, HasSubstr("A file has taken this picture's place since it was "
                                       "moved. It is never overwritten"));
    EXPECT_EQ(testing::readFile(place), "a newer file");

    Outcome beside = library.brevant("restore --beside --json " + id + " " + shellWord(place));
    EXPECT_EQ(beside.status, ExitStatus::kSuccess) << beside.out;
    Json item = Json::parse(beside.out)["items"][0];
    EXPECT_EQ(item["outcome"], "restored");
    EXPECT_EQ(item["restoredAt"], library.photo("backup/beach (restored).jpg"));
    EXPECT_EQ(testing::readFile(library.photo("backup/beach (restored).jpg")), original);
    EXPECT_EQ(testing::readFile(place), "a newer file");

    // A picture back already is back: said so, and not a failure.
    Outcome twice = library.brevant("restore " + id + " " + shellWord(place));
    EXPECT_EQ(twice.status, ExitStatus::kSuccess);
    EXPECT_THAT(twice.out, HasSubstr("It was put back already, at " +
                                     library.photo("backup/beach (restored).jpg")));
    Outcome stranger = library.brevant("restore " + id + " " + shellWord(place + ".other"));
    EXPECT_EQ(stranger.status, ExitStatus::kFailed);
    EXPECT_THAT(stranger.out, HasSubstr("This picture is not part of this cleanup."));
}

TEST(CleanCommand, SimilarVersionsAndSeriesAreAddedToTheIdenticalCopies) {
    Library library;
    std::string sample = library.tree().path("sample");
    ASSERT_EQ(testing::runCommand(std::string(BREVANT_SAMPLE_TOOL) + " " + shellWord(sample) +
                                  " >/dev/null"),
              0);
    auto kinds = [&](const std::string& option) {
        Outcome run = library.brevant("clean --dry-run --json " + option + " " + shellWord(sample));
        EXPECT_EQ(run.status, ExitStatus::kSuccess) << run.err;
        Json document = Json::parse(run.out);
        std::map<std::string, int> moves;
        for (const auto& group : document["plan"]["groups"]) {
            EXPECT_FALSE(group["keep"].empty());
            moves[group["kind"]] += static_cast<int>(group["move"].size());
        }
        return moves;
    };

    EXPECT_EQ(kinds(""), (std::map<std::string, int>{{"identical", 2}}));
    // The burst is one series; the identical copies outside it stay groups.
    EXPECT_EQ(kinds("--series"), (std::map<std::string, int>{{"identical", 2}, {"series", 3}}));
    // The identical copies are among the similar versions, judged once.
    EXPECT_EQ(kinds("--similar balanced"), (std::map<std::string, int>{{"similar", 9}}));
    EXPECT_THAT(library.journals(), IsEmpty());
}

TEST(CleanCommand, HistoryReconcilesAnInterruptedCleanupFirst) {
    Library library;
    Outcome clean = library.brevant("clean --yes --json " + shellWord(library.photos()));
    ASSERT_EQ(clean.status, ExitStatus::kSuccess) << clean.err;
    Json report = Json::parse(clean.out)["report"];
    ASSERT_EQ(report["items"].size(), 5U);
    std::string id = report["planID"];
    std::string journal = library.journals().at(0);
    std::string lines = testing::readFile(journal);
    // As if the program had stopped while moving the second picture: the
    // plan, the first intent and outcome and the second intent on disk, the
    // last three pictures never touched.
    std::string untouched;
    for (int item = 2; item < 5; ++item) {
        untouched += " " + shellWord(report["items"][item]["removal"]["path"]);
    }
    ASSERT_EQ(library.brevant("restore " + id + untouched).status, ExitStatus::kSuccess);
    std::size_t end = 0;
    for (int line = 0; line < 4; ++line) {
        end = lines.find('\n', end) + 1;
    }
    library.tree().file(fs::relative(journal, library.tree().root()).string(),
                        lines.substr(0, end));

    Outcome history = library.brevant("history");
    EXPECT_EQ(history.status, ExitStatus::kSuccess);
    EXPECT_THAT(history.out, HasSubstr("An earlier cleanup was interrupted\nBrevant stopped while "
                                       "this cleanup was running."));
    EXPECT_THAT(history.out,
                HasSubstr("cat (1).png: Not attempted: the cleanup stopped before reaching it.\n"));
    Outcome again = library.brevant("history");
    EXPECT_THAT(again.out, Not(HasSubstr("interrupted")));
    EXPECT_THAT(again.out, HasSubstr("5 pictures: 2 moved, 3 skipped, 0 failed, 0 unknown"));
}

TEST(CleanCommand, ALockFileThatCannotBeReadStopsEveryCleanupUntilRepairedOrReset) {
    Library library;
    auto before = library.contents();
    std::string store = library.data() + "/keep-locks.json";
    for (bool link : {false, true}) {
        SCOPED_TRACE(link ? "a symbolic link" : "damaged");
        fs::remove(store);
        if (link) {
            fs::create_symlink(library.tree().file("elsewhere.json", "[]"), store);
        } else {
            library.tree().file("data/keep-locks.json", "[{\"path\": \"/photos/");
        }
        Outcome clean = library.brevant("clean --yes " + shellWord(library.photos()));
        EXPECT_EQ(clean.status, ExitStatus::kFailed);
        EXPECT_THAT(clean.err,
                    HasSubstr("brevant clean: The lock file " + store + " cannot be read ("));
        EXPECT_THAT(clean.err, HasSubstr("no cleanup runs until it can. Repair the file, or set "
                                         "it aside to start again without locks.\nTo set it "
                                         "aside and start with no locks: brevant locks --reset\n"));
        EXPECT_EQ(library.contents(), before);
        EXPECT_TRUE(library.journals().empty());
        EXPECT_EQ(library.brevant("lock " + shellWord(library.photo("2020/beach.jpg"))).status,
                  ExitStatus::kFailed);
        EXPECT_EQ(fs::is_symlink(store), link);
    }
    Outcome reset = library.brevant("locks --reset");
    EXPECT_EQ(reset.status, ExitStatus::kSuccess) << reset.err;
    EXPECT_THAT(reset.out, HasSubstr("The lock file was moved aside to " + store + ".damaged-"));
    EXPECT_EQ(library.brevant("locks --reset").out,
              "The lock file can be read; nothing was moved.\n");
    EXPECT_EQ(library.brevant("clean --yes " + shellWord(library.photos())).status,
              ExitStatus::kSuccess);
}

TEST(CleanCommand, HistoryListsAJournalThatIsALinkAndRestoreShowsOddNamesEscaped) {
    Library library;
    std::string odd =
        library.tree().file("photos/odd/new\nline.jpg", testing::photoOfSize(9, 9000));
    library.tree().file("photos/odd/plain.jpg", testing::photoOfSize(9, 9000));
    // The plain one is kept, so the odd one moves.
    ASSERT_EQ(library.brevant("lock " + shellWord(library.photo("odd/plain.jpg"))).status,
              ExitStatus::kSuccess);
    Outcome clean = library.brevant("clean --yes --json " + shellWord(library.photo("odd")));
    ASSERT_EQ(clean.status, ExitStatus::kSuccess) << clean.err << clean.out;
    std::string id = Json::parse(clean.out)["report"]["planID"];
    Outcome back = library.brevant("restore " + id + " --all");
    EXPECT_EQ(back.status, ExitStatus::kSuccess);
    EXPECT_EQ(back.out,
              "new\\nline.jpg is back, at " + library.photo("odd/new\\nline.jpg") + ".\n");
    EXPECT_EQ(testing::readFile(odd), testing::photoOfSize(9, 9000));

    // A journal put elsewhere behind a link is listed, never followed.
    std::string journal = library.journals().at(0);
    std::string away = library.tree().path("journal-away.jsonl");
    fs::rename(journal, away);
    fs::create_symlink(away, journal);
    Outcome history = library.brevant("history");
    EXPECT_EQ(history.status, ExitStatus::kSuccess);
    EXPECT_THAT(history.out, HasSubstr(id + "  0 pictures"));
    EXPECT_THAT(history.out, HasSubstr("This cleanup record is a symbolic link, which Brevant "
                                       "does not follow: " +
                                       journal));

    // A run killed while writing its plan moved nothing, and says so;
    // putting it all back is nothing to do and leaves the record as it is.
    std::string cutID = "14FBF130-6A82-4D49-97C6-596C85818F54";
    std::string cut = library.tree().file("data/Cleanups/cleanup-" + cutID + ".jsonl",
                                          "{\"kind\": \"plan\", \"pl");
    history = library.brevant("history");
    EXPECT_THAT(history.out, HasSubstr(cutID + "  0 pictures"));
    EXPECT_THAT(history.out, HasSubstr("This cleanup stopped while its plan was being written, "
                                       "before any picture could move: it moved nothing."));
    Outcome none = library.brevant("restore 14FBF --all");
    EXPECT_EQ(none.status, ExitStatus::kSuccess) << none.err;
    EXPECT_EQ(none.err, "");
    EXPECT_EQ(testing::readFile(cut), "{\"kind\": \"plan\", \"pl");
}

} // namespace
} // namespace brevant::cli

namespace brevant::cli {
namespace {

// The review the user left in the window: two beach copies marked (the
// suggested keeper among them), the cat group looked at and left whole, and
// a dog copy marked that then changes on disk.
TEST(CleanCommand, TakesBackTheSavedReviewOfTheSameFoldersAndSaysWhatCameBack) {
    Library library;
    std::string reviews = library.data() + "/reviews.json";
    ScanRequest request{.source = ScanSource::ofFolders({library.photos()}),
                        .savedReviews = reviews,
                        .review = ReviewRules{}};
    auto window = ScanPipeline().run(request, CancellationFlag(), {});
    ASSERT_TRUE(window.has_value());
    ReviewSession& session = *window->session;
    for (const char* marked : {"2020/beach.jpg", "backup/beach copy.jpg", "2022/dog.jpg"}) {
        ASSERT_TRUE(session.mark(library.photo(marked)).has_value()) << marked;
    }
    const DuplicateGroup* cats = session.group(library.photo("2021/cat.png"));
    ASSERT_NE(cats, nullptr);
    ASSERT_TRUE(ScanPipeline::saveReview(*window, {cats->id}));
    std::error_code error;
    fs::last_write_time(library.photo("2022/dog.jpg"),
                        fs::file_time_type::clock::now() - std::chrono::hours(1), error);
    ASSERT_FALSE(error);

    std::string photos = shellWord(library.photos());
    Outcome dry = library.brevant("clean --dry-run " + photos);
    EXPECT_EQ(dry.status, ExitStatus::kSuccess) << dry.err;
    EXPECT_THAT(dry.out, ::testing::StartsWith(
                             "Resumed your last review of these folders: 2 marks restored, 1 "
                             "dropped because its file changed; 1 group already reviewed.\n"));

    Outcome clean = library.brevant("clean --yes --json " + photos);
    ASSERT_EQ(clean.status, ExitStatus::kSuccess) << clean.err;
    Json document = Json::parse(clean.out);
    EXPECT_EQ(document["resumed"],
              Json::parse(R"({"restored": 2, "changed": 1, "refused": 0, "reviewedGroups": 1})"));
    std::vector<std::string> moved = plannedMoves(document);
    // The user's keeper stays; the group they looked at is left whole; the
    // rest follow the suggestions.
    EXPECT_THAT(moved, ::testing::Contains(library.photo("2020/beach.jpg")));
    EXPECT_THAT(moved, ::testing::Contains(library.photo("backup/beach copy.jpg")));
    EXPECT_THAT(moved, ::testing::Contains(::testing::HasSubstr("/2023/tree")));
    EXPECT_THAT(moved, Not(::testing::Contains(library.photo("backup/beach.jpg"))));
    EXPECT_THAT(moved, Not(::testing::Contains(::testing::HasSubstr("/2021/cat"))));
    EXPECT_TRUE(fs::exists(library.photo("backup/beach.jpg")));
    EXPECT_FALSE(fs::exists(library.photo("2020/beach.jpg")));

    // The saved review follows the cleanup: the moved copies left it.
    auto saved = ReviewStore(reviews).find({library.photos()}, ScanMode::Kind::identical);
    ASSERT_TRUE(saved.has_value());
    EXPECT_THAT(saved->marks, IsEmpty());
    ASSERT_EQ(saved->reviewed.size(), 1U);
    EXPECT_EQ(saved->reviewed.front().id, cats->id);
}

} // namespace
} // namespace brevant::cli
