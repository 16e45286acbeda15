#include "engine/cleanup/CleanupJournal.hpp"

#include "tests/cleanup/CleanupFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/cleanup/JournalTexts.hpp"
#include "engine/platform/AppendOnlyFile.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <sys/stat.h>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals and expecteds; the
// check cannot see through GoogleTest's macros.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using Entry = CleanupJournal::Entry;
using testing::fixedDate;
using testing::TempTree;

// A plan of files that need not exist: for the coding and the report.
CleanupPlan paperPlan() {
    PlannedRemoval b;
    b.path = "/photos/b.jpg";
    b.root = "/photos";
    b.snapshot = testing::paperSnapshot(2);
    b.sha256 = "ab";
    b.keepers = {{"/photos/a.jpg", testing::paperSnapshot(1)}};
    b.matchKind = MatchKind::identical;
    PlannedRemoval c = b;
    c.path = "/photos/c\xff.jpg";
    c.snapshot = testing::paperSnapshot(3);
    PlannedRemoval d = b;
    d.path = "/photos/d.jpg";
    d.snapshot = testing::paperSnapshot(4);
    d.matchKind.reset();
    return testing::planOf({b, c, d}, {"/photos"});
}

std::vector<std::string> linesOf(const std::string& path) {
    std::string contents = testing::readFile(path);
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end = contents.find('\n'); end != std::string::npos;
         start = end + 1, end = contents.find('\n', start)) {
        lines.push_back(contents.substr(start, end - start));
    }
    if (start != contents.size()) {
        lines.push_back(contents.substr(start) + "<no line feed>");
    }
    return lines;
}

using RecordingCalls = testing::ScriptedWriteCalls;

TEST(CleanupJournal, IsCreatedOnceWithMode0600InAFolderItMakes) {
    TempTree tree;
    std::string directory = tree.path("support/Cleanups");
    CleanupPlan plan = paperPlan();
    // A strict umask must not leave the owner unable to append later.
    mode_t previous = ::umask(0277);
    auto journal = CleanupJournal::create(plan, directory, fixedDate());
    ::umask(previous);
    ASSERT_TRUE(journal) << journal.error().description;
    std::string expected = directory + "/cleanup-0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9.jsonl";
    EXPECT_EQ(journal->path(), expected);
    EXPECT_EQ(CleanupJournal::pathFor(plan.id, directory), expected);
    struct stat status{};
    ASSERT_EQ(::stat(expected.c_str(), &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    std::string firstContents = testing::readFile(expected);
    ASSERT_EQ(linesOf(expected).size(), 1U);
    EXPECT_TRUE(firstContents.starts_with(R"({"kind":"plan","plan":{"id":")"));

    auto again = CleanupJournal::create(plan, directory, fixedDate(60));
    ASSERT_FALSE(again);
    EXPECT_EQ(again.error().code, EEXIST);
    EXPECT_EQ(again.error().description,
              "The file \u201ccleanup-0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9.jsonl\u201d "
              "couldn\u2019t be saved in the folder \u201c" +
                  directory + "\u201d because a file with the same name already exists.");
    EXPECT_EQ(testing::readFile(expected), firstContents);

    // Not through a link left in its place either.
    CleanupPlan other = plan;
    other.id = Uuid::make();
    std::string target = tree.file("elsewhere", "keep");
    tree.symbolicLink(target, "support/Cleanups/" + CleanupJournal::fileName(other.id));
    auto throughLink = CleanupJournal::create(other, directory, fixedDate());
    ASSERT_FALSE(throughLink);
    EXPECT_EQ(throughLink.error().code, EEXIST);
    EXPECT_EQ(testing::readFile(target), "keep");

    // Any other reason is said as it is: here a plain file where the
    // folder should be.
    std::string blocked = tree.file("blocked", "");
    auto noFolder = CleanupJournal::create(plan, blocked + "/Cleanups", fixedDate());
    ASSERT_FALSE(noFolder);
    EXPECT_EQ(noFolder.error().code, ENOTDIR);
    EXPECT_EQ(noFolder.error().description,
              "The cleanup record \u201c" + CleanupJournal::fileName(plan.id) +
                  "\u201d couldn\u2019t be created in the folder \u201c" + blocked +
                  "/Cleanups\u201d (Not a directory).");
}

TEST(CleanupJournal, WritesOneCompactLinePerEntryWithTheDocumentedKeys) {
    TempTree tree;
    CleanupPlan plan = paperPlan();
    plan.removals.resize(1);
    auto journal = CleanupJournal::create(plan, tree.root(), fixedDate(1));
    ASSERT_TRUE(journal);
    ASSERT_TRUE(journal->write(Entry::ofIntent("/photos/b.jpg", fixedDate(2))));
    ASSERT_TRUE(journal->write(Entry::ofOutcome(
        "/photos/b.jpg", ItemOutcome::movedToTrash("/t/files/b.jpg"), fixedDate(3))));
    ASSERT_TRUE(
        journal->write(Entry::ofNote("/photos/b\xff.jpg", "Line one\nline \"two\"", fixedDate(4))));
    ASSERT_TRUE(journal->write(
        Entry::ofOutcome("/photos/b.jpg", ItemOutcome::skipped("Why."), fixedDate(5))));
    ASSERT_TRUE(journal->write(Entry::ofFinished(fixedDate(6))));

    std::vector<std::string> expected;
    expected.push_back(
        R"({"kind":"plan","plan":{"id":"0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9",)"
        R"("created":"2026-11-14T21:49:44Z","roots":["/photos"],"removals":[)"
        R"({"path":"/photos/b.jpg","root":"/photos","snapshot":)" +
        testing::paperSnapshotText(2) +
        R"(,"sha256":"ab","keepers":[{"path":"/photos/a.jpg","snapshot":)" +
        testing::paperSnapshotText(1) +
        R"(}],"isCloudSynced":false,"isExternalVolume":false,"matchKind":"identical"}]},)"
        R"("at":"2026-11-14T21:49:45Z"})");
    expected.emplace_back(
        R"({"kind":"intent","itemID":"/photos/b.jpg","at":"2026-11-14T21:49:46Z"})");
    expected.emplace_back(R"({"kind":"outcome","itemID":"/photos/b.jpg",)"
                          R"("outcome":{"movedToTrash":{"trashPath":"/t/files/b.jpg"}},)"
                          R"("at":"2026-11-14T21:49:47Z"})");
    // The byte that is not UTF-8 is kept as a private-use character.
    expected.emplace_back(
        "{\"kind\":\"note\",\"itemID\":\"/photos/b\xee\xbf\xbf.jpg\","
        "\"text\":\"Line one\\nline \\\"two\\\"\",\"at\":\"2026-11-14T21:49:48Z\"}");
    expected.emplace_back(
        R"({"kind":"outcome","itemID":"/photos/b.jpg","outcome":{"skipped":{"_0":"Why."}},)"
        R"("at":"2026-11-14T21:49:49Z"})");
    expected.emplace_back(R"({"kind":"finished","at":"2026-11-14T21:49:50Z"})");
    EXPECT_EQ(linesOf(journal->path()), expected);

    auto parsed = CleanupJournal::parse(journal->path());
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->plan, plan);
    EXPECT_EQ(parsed->started, fixedDate(1));
    EXPECT_EQ(parsed->intents, std::set<std::string>{"/photos/b.jpg"});
    EXPECT_EQ(parsed->outcomes.at("/photos/b.jpg"),
              (CleanupJournal::RecordedOutcome{ItemOutcome::skipped("Why."), fixedDate(5)}));
    EXPECT_EQ(parsed->notes.at("/photos/b\xff.jpg"),
              std::vector<std::string>{"Line one\nline \"two\""});
    EXPECT_EQ(parsed->finished, fixedDate(6));
}

TEST(CleanupJournal, SynchronisesEveryLineWrittenInOneCallBeforeWriteReturns) {
    TempTree tree;
    RecordingCalls calls;
    platform::ScopedFileWriteCalls scope(calls);
    auto journal = CleanupJournal::create(paperPlan(), tree.root(), fixedDate());
    ASSERT_TRUE(journal);
    ASSERT_EQ(calls.log.size(), 2U);
    EXPECT_TRUE(calls.log[0].starts_with(R"(write {"kind":"plan",)"));
    EXPECT_TRUE(calls.log[0].ends_with("}\n"));
    EXPECT_EQ(calls.log[1], "sync");

    std::vector<Entry> entries{
        Entry::ofIntent("/photos/b.jpg", fixedDate(1)),
        Entry::ofOutcome("/photos/b.jpg", ItemOutcome::failed("No."), fixedDate(2)),
        Entry::ofNote("/photos/b.jpg", "n", fixedDate(3)), Entry::ofFinished(fixedDate(4))};
    for (const auto& entry : entries) {
        calls.log.clear();
        ASSERT_TRUE(journal->write(entry));
        EXPECT_EQ(calls.log, (std::vector<std::string>{"write " + entry.encoded() + "\n", "sync"}));
    }

    // Put Back and notes open their own handle once the run let go of it:
    // the same per line.
    std::string path = journal->path();
    EXPECT_EQ(CleanupJournal::note(path, "/photos/b.jpg", "during", fixedDate(5)).error().code,
              EWOULDBLOCK);
    {
        CleanupJournal closed = std::move(*journal);
    }
    calls.log.clear();
    ASSERT_TRUE(CleanupJournal::append(path, ItemOutcome::restored("/photos/b.jpg"),
                                       "/photos/b.jpg", fixedDate(5)));
    ASSERT_TRUE(CleanupJournal::note(path, "/photos/b.jpg", "again", fixedDate(6)));
    ASSERT_EQ(calls.log.size(), 4U);
    EXPECT_EQ(calls.log[1], "sync");
    EXPECT_EQ(calls.log[3], "sync");
    EXPECT_EQ(linesOf(path).size(), 7U);
}

TEST(CleanupJournal, AFailedWriteOrSyncReachesTheCaller) {
    TempTree tree;
    RecordingCalls calls;
    platform::ScopedFileWriteCalls scope(calls);
    calls.writeError = ENOSPC;
    auto refused = CleanupJournal::create(paperPlan(), tree.root(), fixedDate());
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, ENOSPC);
    EXPECT_EQ(refused.error().description,
              "The cleanup record \u201ccleanup-0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9.jsonl\u201d "
              "couldn\u2019t be written (No space left on device).");
    // The file was made; without a plan line it says it moved nothing.
    auto empty =
        CleanupJournal::report(CleanupJournal::pathFor(testing::fixedPlanID(), tree.root()));
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->items.empty());
    EXPECT_EQ(empty->damage, std::string(journal_texts::kCutBeforePlan));

    calls.writeError.reset();
    CleanupPlan plan = paperPlan();
    plan.id = Uuid::make();
    auto journal = CleanupJournal::create(plan, tree.root(), fixedDate());
    ASSERT_TRUE(journal);

    calls.syncError = EIO;
    auto unsynced = journal->write(Entry::ofIntent("/photos/b.jpg", fixedDate(1)));
    ASSERT_FALSE(unsynced);
    EXPECT_EQ(unsynced.error().code, EIO);
    calls.syncError.reset();

    // A write that takes part of the line leaves a torn piece; it fails, and
    // the next line starts on a line of its own.
    calls.shortBy = 10;
    auto torn = journal->write(Entry::ofIntent("/photos/c.jpg", fixedDate(2)));
    ASSERT_FALSE(torn);
    EXPECT_EQ(torn.error().code, EIO);
    calls.shortBy = 0;
    ASSERT_TRUE(journal->write(Entry::ofIntent("/photos/d.jpg", fixedDate(3))));
    auto lines = linesOf(journal->path());
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[3], Entry::ofIntent("/photos/d.jpg", fixedDate(3)).encoded());
    auto parsed = CleanupJournal::parse(journal->path());
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->intents, (std::set<std::string>{"/photos/b.jpg", "/photos/d.jpg"}));
}

TEST(CleanupJournal, ReportsEveryPlannedItemAndTheLatestOutcomeOfEach) {
    TempTree tree;
    CleanupPlan plan = paperPlan();
    auto journal = CleanupJournal::create(plan, tree.root(), fixedDate());
    ASSERT_TRUE(journal);
    const std::string b = plan.removals[0].path;
    const std::string c = plan.removals[1].path;
    ASSERT_TRUE(journal->write(Entry::ofIntent(b, fixedDate(1))));
    ASSERT_TRUE(journal->write(
        Entry::ofOutcome(b, ItemOutcome::movedToTrash("/t/files/b.jpg"), fixedDate(2))));
    ASSERT_TRUE(journal->write(Entry::ofIntent(c, fixedDate(3))));

    // As it stands: c had an intent only, d nothing at all.
    auto interrupted = CleanupJournal::report(journal->path());
    ASSERT_TRUE(interrupted);
    EXPECT_EQ(interrupted->planID, plan.id);
    EXPECT_EQ(interrupted->started, fixedDate());
    EXPECT_EQ(interrupted->finished, std::nullopt);
    EXPECT_FALSE(interrupted->reconciled);
    EXPECT_EQ(interrupted->journalPath, journal->path());
    ASSERT_EQ(interrupted->items.size(), 3U);
    EXPECT_EQ(interrupted->items[0].removal, plan.removals[0]);
    EXPECT_EQ(interrupted->items[0].outcome, ItemOutcome::movedToTrash("/t/files/b.jpg"));
    EXPECT_EQ(interrupted->items[0].at, fixedDate(2));
    EXPECT_EQ(interrupted->items[1].outcome,
              ItemOutcome::unknown("The app stopped while moving this picture."));
    EXPECT_EQ(interrupted->items[1].at, fixedDate());
    EXPECT_EQ(interrupted->items[2].outcome,
              ItemOutcome::skipped("Not attempted: the cleanup stopped before reaching it."));
    EXPECT_EQ(interrupted->moved(), 1);
    EXPECT_EQ(interrupted->unknown(), 1);
    EXPECT_EQ(interrupted->skipped(), 1);
    EXPECT_EQ(interrupted->freedBytes(), 10);

    ASSERT_TRUE(journal->write(Entry::ofFinished(fixedDate(4))));
    // Put Back, later, through its own handle, and its notes.
    std::string path = journal->path();
    {
        CleanupJournal closed = std::move(*journal);
    }
    ASSERT_TRUE(CleanupJournal::note(path, b, "first", fixedDate(5)));
    ASSERT_TRUE(CleanupJournal::append(path, ItemOutcome::restored(b), b, fixedDate(6)));
    ASSERT_TRUE(CleanupJournal::note(path, b, "second", fixedDate(7)));
    auto report = CleanupJournal::report(path);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->finished, fixedDate(4));
    EXPECT_EQ(report->items[0].outcome, ItemOutcome::restored(b));
    EXPECT_EQ(report->items[0].at, fixedDate(6));
    EXPECT_EQ(report->items[0].notes, (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(report->items[1].at, fixedDate(4));
    EXPECT_EQ(report->restored(), 1);
    EXPECT_EQ(report->moved(), 0);
    EXPECT_EQ(report->freedBytes(), 0);
}

TEST(CleanupJournal, ALineCutAnywhereCostsOnlyItselfAndTheNextEntryStartsCleanly) {
    TempTree tree;
    CleanupPlan plan = paperPlan();
    const std::string b = plan.removals[0].path;
    const std::string c = plan.removals[1].path;
    std::vector<Entry> entries{
        Entry::ofPlan(plan, fixedDate()),
        Entry::ofIntent(b, fixedDate(1)),
        Entry::ofOutcome(b, ItemOutcome::movedToTrash("/t/files/b\xc3\xa9.jpg"), fixedDate(2)),
        Entry::ofNote(c, "caf\xc3\xa9 \xe2\x80\x94 note", fixedDate(3)),
        Entry::ofIntent(c, fixedDate(4)),
        Entry::ofOutcome(c, ItemOutcome::failed("No."), fixedDate(5)),
        Entry::ofFinished(fixedDate(6))};
    // What the journal holds after each whole line, worked out by hand.
    CleanupJournal::Parsed cutBeforePlan;
    cutBeforePlan.cutBeforePlan = true;
    std::vector<std::optional<CleanupJournal::Parsed>> expected{cutBeforePlan};
    CleanupJournal::Parsed state;
    state.plan = plan;
    state.started = fixedDate();
    expected.push_back(state);
    state.intents.insert(b);
    expected.push_back(state);
    state.outcomes[b] = {ItemOutcome::movedToTrash("/t/files/b\xc3\xa9.jpg"), fixedDate(2)};
    expected.push_back(state);
    state.notes[c] = {"caf\xc3\xa9 \xe2\x80\x94 note"};
    expected.push_back(state);
    state.intents.insert(c);
    expected.push_back(state);
    state.outcomes[c] = {ItemOutcome::failed("No."), fixedDate(5)};
    expected.push_back(state);
    state.finished = fixedDate(6);
    expected.push_back(state);

    std::string whole;
    std::vector<std::size_t> lineEnds;
    for (const auto& entry : entries) {
        whole += entry.encoded() + "\n";
        lineEnds.push_back(whole.size());
    }
    std::string path = tree.path("cleanup-cut.jsonl");
    Entry next = Entry::ofNote(b, "after the cut", fixedDate(9));
    // Durability is not what this shows; a thousand synchronisations would
    // only make it slow.
    RecordingCalls noSync;
    noSync.syncs = false;
    platform::ScopedFileWriteCalls scope(noSync);
    // Every byte of the lines after the plan, and a sample of the plan line.
    std::vector<std::size_t> cuts;
    for (std::size_t cut = 0; cut < lineEnds[0]; cut += 37) {
        cuts.push_back(cut);
    }
    for (std::size_t cut = lineEnds[0] - 1; cut <= whole.size(); ++cut) {
        cuts.push_back(cut);
    }
    for (std::size_t cut : cuts) {
        std::string kept = whole.substr(0, cut);
        std::size_t wholeLines = std::ranges::count(kept, '\n');
        // A cut just before a line feed leaves that line whole but for it.
        bool lastLineComplete = cut < whole.size() && whole[cut] == '\n';
        std::size_t linesRead = wholeLines + (lastLineComplete ? 1 : 0);
        {
            std::error_code error;
            std::filesystem::remove(path, error);
            tree.file("cleanup-cut.jsonl", kept);
        }
        EXPECT_EQ(CleanupJournal::parseContents(kept), expected[linesRead]) << "cut at " << cut;
        // From a file, a journal cut in its plan is dated by the file.
        auto fromFile = CleanupJournal::parse(path);
        ASSERT_TRUE(fromFile) << "cut at " << cut;
        if (linesRead == 0) {
            EXPECT_TRUE(fromFile->cutBeforePlan) << "cut at " << cut;
            EXPECT_FALSE(fromFile->needsReconciling()) << "cut at " << cut;
        } else {
            EXPECT_EQ(fromFile, expected[linesRead]) << "cut at " << cut;
        }

        auto journal = CleanupJournal::appendingTo(path);
        ASSERT_TRUE(journal) << journal.error().description;
        ASSERT_TRUE(journal->write(next));
        std::string after = testing::readFile(path);
        bool torn = !kept.empty() && !kept.ends_with('\n');
        EXPECT_EQ(after, kept + (torn ? "\n" : "") + next.encoded() + "\n") << "cut at " << cut;
        auto parsed = CleanupJournal::parse(path);
        ASSERT_TRUE(parsed) << "cut at " << cut;
        // The torn piece, now a line of its own, is counted as damaged.
        int damaged = torn && !lastLineComplete ? 1 : 0;
        if (linesRead == 0) {
            // Without its plan the journal still lists what its lines name.
            EXPECT_TRUE(parsed->planDamaged) << "cut at " << cut;
            ASSERT_EQ(parsed->plan.removals.size(), 1U) << "cut at " << cut;
            EXPECT_EQ(parsed->plan.removals[0].path, b);
            EXPECT_EQ(parsed->damagedLines, damaged) << "cut at " << cut;
            continue;
        }
        auto withNote = *expected[linesRead];
        withNote.notes[b].push_back("after the cut");
        withNote.damagedLines = damaged;
        EXPECT_EQ(*parsed, withNote) << "cut at " << cut;
    }
}

TEST(CleanupJournal, HistoryListsReadableJournalsNewestFirst) {
    TempTree tree;
    std::string directory = tree.folder("Cleanups");
    std::vector<Uuid> ids;
    for (int started : {10, 30, 20}) {
        CleanupPlan plan = paperPlan();
        plan.id = Uuid::make();
        ids.push_back(plan.id);
        auto journal = CleanupJournal::create(plan, directory, fixedDate(started));
        ASSERT_TRUE(journal);
        if (started != 20) {
            ASSERT_TRUE(journal->write(Entry::ofFinished(fixedDate(started + 1))));
        }
    }
    // Listed with what is wrong: no plan line, only a torn one, a link, not
    // a regular file. Left out: not named as a journal, and anything in a
    // subfolder.
    CleanupPlan lost = paperPlan();
    lost.id = Uuid::make();
    std::string planLine = Entry::ofPlan(lost, fixedDate(40)).encoded();
    Uuid planlessID = Uuid::make();
    tree.file("Cleanups/cleanup-" + planlessID.text() + ".jsonl",
              Entry::ofIntent("/photos/b.jpg", fixedDate(50)).encoded() + "\n" +
                  Entry::ofFinished(fixedDate(51)).encoded() + "\n");
    tree.file("Cleanups/cleanup-" + lost.id.text() + ".jsonl",
              planLine.substr(0, planLine.size() - 2));
    Uuid garbledID = Uuid::make();
    tree.file("Cleanups/cleanup-" + garbledID.text() + ".jsonl", "{\"kind\": \"pl\n");
    tree.file("Cleanups/" + lost.id.text() + ".jsonl", planLine + "\n");
    tree.file("Cleanups/cleanup-" + lost.id.text() + ".json", planLine + "\n");
    tree.file("Cleanups/cleanup-" + lost.id.text() + ".jsonl.bak", planLine + "\n");
    tree.file("Cleanups/old/cleanup-" + lost.id.text() + ".jsonl", planLine + "\n");
    tree.file("elsewhere.jsonl", planLine + "\n");
    tree.symbolicLink(tree.path("elsewhere.jsonl"), "Cleanups/cleanup-link.jsonl");
    tree.folder("Cleanups/cleanup-folder.jsonl");
    tree.fifo("Cleanups/cleanup-fifo.jsonl");

    auto all = CleanupJournal::history(directory);
    std::map<std::string, std::string> damaged;
    std::vector<CleanupReport> history;
    for (const auto& report : all) {
        if (report.damage) {
            damaged[std::filesystem::path(report.journalPath).filename().string()] = *report.damage;
        } else {
            history.push_back(report);
        }
    }
    auto recordName = [](const std::string& name) { return "The cleanup record \u201c" + name; };
    ASSERT_EQ(damaged.size(), 6U);
    // Cut while its plan was written: nothing can have moved.
    std::string torn = "cleanup-" + lost.id.text() + ".jsonl";
    EXPECT_EQ(damaged[torn], "This cleanup stopped while its plan was being written, before any "
                             "picture could move: it moved nothing.");
    std::string garbled = "cleanup-" + garbledID.text() + ".jsonl";
    EXPECT_EQ(damaged[garbled], recordName(garbled) + "\u201d couldn\u2019t be read: none of "
                                                      "its lines could be read.");
    EXPECT_EQ(damaged["cleanup-folder.jsonl"],
              recordName("cleanup-folder.jsonl") + "\u201d is not a file, so it cannot be read.");
    EXPECT_EQ(damaged["cleanup-fifo.jsonl"],
              recordName("cleanup-fifo.jsonl") + "\u201d is not a file, so it cannot be read.");
    EXPECT_TRUE(damaged["cleanup-link.jsonl"].starts_with(
        "This cleanup record is a symbolic link, which Brevant does not follow: " + directory +
        "/cleanup-link.jsonl."));
    auto planless = std::ranges::find_if(all, [](const CleanupReport& report) {
        return report.damage && report.damage->starts_with("Part of this cleanup");
    });
    ASSERT_NE(planless, all.end());
    ASSERT_EQ(planless->items.size(), 1U);
    EXPECT_EQ(planless->items[0].removal.path, "/photos/b.jpg");

    ASSERT_EQ(history.size(), 3U);
    EXPECT_EQ(history[0].planID, ids[1]);
    EXPECT_EQ(history[1].planID, ids[2]);
    EXPECT_EQ(history[2].planID, ids[0]);
    EXPECT_EQ(history[0].finished, fixedDate(31));
    EXPECT_EQ(history[1].finished, std::nullopt);
    EXPECT_EQ(history[0].journalPath, CleanupJournal::pathFor(ids[1], directory));

    // The unfinished one, and the planless one whose item began to move
    // without an outcome: both are to be settled, newest first.
    EXPECT_EQ(CleanupJournal::unfinished(directory),
              (std::vector<std::string>{CleanupJournal::pathFor(planlessID, directory),
                                        CleanupJournal::pathFor(ids[2], directory)}));
    EXPECT_TRUE(CleanupJournal::history(tree.path("missing")).empty());
    EXPECT_TRUE(CleanupJournal::unfinished(tree.path("missing")).empty());
}

TEST(CleanupJournal, OpensOnlyExistingRegularFilesToAppend) {
    TempTree tree;
    auto missing = CleanupJournal::appendingTo(tree.path("cleanup-none.jsonl"));
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, ENOENT);
    EXPECT_EQ(missing.error().description,
              "The cleanup record \u201ccleanup-none.jsonl\u201d couldn\u2019t be opened (No such "
              "file or directory).");
    std::string target = tree.file("target.jsonl", "x");
    auto link = CleanupJournal::appendingTo(tree.symbolicLink(target, "cleanup-link.jsonl"));
    ASSERT_FALSE(link);
    EXPECT_EQ(link.error().code, ELOOP);
    auto fifo = CleanupJournal::appendingTo(tree.fifo("cleanup-fifo.jsonl"));
    ASSERT_FALSE(fifo);
    EXPECT_EQ(fifo.error().code, EINVAL);
    EXPECT_FALSE(CleanupJournal::note(tree.path("nothing"), "/a", "n"));
    EXPECT_FALSE(CleanupJournal::append(tree.path("nothing"), ItemOutcome::restored("/a"), "/a"));
    EXPECT_EQ(testing::readFile(target), "x");
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
