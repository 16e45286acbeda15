// Random plans over real files, with random changes made to the files between
// planning and running, and after every run the one promise checked: no
// picture's bytes are gone. BREVANT_CLEANUP_SEED chooses another seed and
// BREVANT_CLEANUP_ROUNDS more rounds; a failure names the seed and round to
// run again.

#include "tests/cleanup/ExecutorFixtures.hpp"
#include "tests/fixtures/FakeTrasher.hpp"

#include "engine/cleanup/CleanupExecutor.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/platform/FreedesktopTrash.hpp"
#include "engine/review/ReviewSession.hpp"
#include "engine/support/PathNames.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <random>
#include <set>

namespace brevant {
namespace {

namespace fs = std::filesystem;
using testing::CleanupWorkspace;
using testing::readFile;

constexpr std::uint64_t kDefaultSeed = 20261114;
constexpr int kDefaultRounds = 16;

std::uint64_t numberFromEnvironment(const char* name, std::uint64_t fallback) {
    const char* text = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    if (text == nullptr || *text == '\0') {
        return fallback;
    }
    return std::strtoull(text, nullptr, 10);
}

// One file on disk as the scan saw it.
struct Original {
    std::string path;
    FileIdentity identity;
    std::string bytes;
};

// A file found after the run, anywhere under the test folder.
struct Found {
    std::string path;
    bool inTrash = false;
};

// What the rounds came to, to see that they reach every outcome.
struct Tally {
    int plans = 0;
    int items = 0;
    std::map<std::string, int> outcomes;
    int putBack = 0;
};

class Round {
public:
    Round(std::uint64_t seed, int round, Tally& tally)
        : random_(seed * 1'000'003 + static_cast<std::uint64_t>(round))
        , tally_(tally) {}

    void run();

private:
    bool chance(double probability) { return std::bernoulli_distribution(probability)(random_); }

    int between(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }

    template <class T> const T& pick(const std::vector<T>& items) {
        return items[static_cast<std::size_t>(between(0, static_cast<int>(items.size()) - 1))];
    }

    std::string randomBytes(int size) {
        std::string bytes(static_cast<std::size_t>(size), '\0');
        for (auto& byte : bytes) {
            byte = static_cast<char>(between(0, 255));
        }
        return bytes;
    }

    [[nodiscard]] std::string rootOf(const std::string& path) const {
        return PathNames::isInside(path, more_) ? more_ : files_.photos;
    }

    void makeGroups();
    std::string newFile(const std::string& bytes);
    void mark(ReviewSession& session);
    void changeFiles(const CleanupPlan& plan);
    void changeFile(const std::string& path, bool isRemoval);
    [[nodiscard]] std::map<FileIdentity, Found> filesOnDisk() const;
    void checkRun(const CleanupPlan& plan, const CleanupReport& report);
    void putSomeBack(const CleanupPlan& plan, const CleanupReport& report);

    std::mt19937_64 random_;
    Tally& tally_;
    CleanupWorkspace files_;
    std::string more_ = files_.tree.folder("more");
    std::vector<std::string> folders_ = {files_.photos, files_.photos + "/2023",
                                         files_.photos + "/2023/june", more_, more_ + "/raw"};
    int nextFile_ = 0;
    std::vector<DuplicateGroup> groups_;
    std::map<std::string, Original> originals_;
    // Files the user deleted or wrote other bytes into before the run.
    std::set<std::string> destroyed_;
};

std::string Round::newFile(const std::string& bytes) {
    std::string folder = pick(folders_);
    std::string path =
        folder + "/IMG_" + std::to_string(nextFile_++) + (chance(0.2) ? " copy" : "") + ".jpg";
    std::string relative = path.substr(files_.tree.root().size() + 1);
    files_.tree.file(relative, bytes);
    FileSnapshot snapshot = testing::snapshotOf(path);
    originals_[path] = {path, snapshot.identity, bytes};
    return path;
}

void Round::makeGroups() {
    int count = between(2, 5);
    for (int g = 0; g < count; ++g) {
        int members = between(2, 4);
        std::vector<std::string> paths;
        paths.reserve(static_cast<std::size_t>(members) + 1);
        bool identical = chance(0.6);
        std::string bytes = randomBytes(between(1, 3000));
        for (int m = 0; m < members; ++m) {
            paths.push_back(newFile(identical ? bytes : randomBytes(between(1, 3000))));
        }
        // Similar groups may also hold a copy of an earlier group, as the
        // similarity pass finds identical copies too.
        if (!identical && !groups_.empty() && chance(0.4)) {
            paths.push_back(pick(pick(groups_).members).path);
        }
        std::vector<PhotoAsset> assets;
        assets.reserve(paths.size());
        for (const auto& path : paths) {
            assets.push_back(testing::assetAt(path, rootOf(path)));
        }
        std::int64_t size = assets.front().size();
        if (identical) {
            groups_.push_back(
                DuplicateGroup::make(testing::identicalGroup({paths.front()}, files_.photos).id,
                                     size, std::move(assets), MatchKind::identical));
            continue;
        }
        groups_.push_back(
            DuplicateGroup::make("similar-" + std::to_string(g), size, std::move(assets),
                                 chance(0.7) ? MatchKind::similar : MatchKind::series, 0.1F));
    }
}

void Round::mark(ReviewSession& session) {
    if (chance(0.3)) {
        session.markAllSuggested();
        return;
    }
    for (const auto& group : groups_) {
        for (const auto& member : group.members) {
            if (chance(0.5)) {
                (void)session.mark(member.path);
            }
        }
    }
}

void Round::changeFile(const std::string& path, bool isRemoval) {
    if (!testing::exists(path)) {
        return;
    }
    // Deleting and rewriting are what the user may do to a kept copy;
    // the executor never touches those.
    int change = between(0, isRemoval ? 3 : 5);
    switch (change) {
    case 0: {
        FileSnapshot now = testing::snapshotOf(path);
        testing::setModified(path, now.modifiedSeconds,
                             (now.modifiedNanoseconds + 1) % 1'000'000'000);
        return;
    }
    case 1:
        testing::moveFile(path, path + ".renamed");
        return;
    case 2:
        (void)::link(path.c_str(),
                     files_.tree.path("links/" + std::to_string(nextFile_++)).c_str());
        return;
    case 3:
        testing::moveFile(path, path + ".orig");
        testing::linkTo(path + ".orig", path);
        return;
    case 4:
        testing::removeFile(path);
        destroyed_.insert(path);
        return;
    case 5: {
        std::string bytes = originals_.at(path).bytes;
        bytes[0] = static_cast<char>(bytes[0] ^ 0x5A);
        testing::overwriteKeepingTimes(path, bytes);
        destroyed_.insert(path);
        return;
    }
    default:
        return;
    }
}

void Round::changeFiles(const CleanupPlan& plan) {
    files_.tree.folder("links");
    std::set<std::string> removals;
    for (const auto& removal : plan.removals) {
        removals.insert(removal.path);
    }
    for (const auto& [path, original] : originals_) {
        if (chance(0.25)) {
            changeFile(path, removals.contains(path));
        }
    }
    if (chance(0.3)) {
        std::string folder = pick(folders_);
        if (testing::exists(folder)) {
            testing::moveFile(folder, folder + "-moved");
            testing::linkTo(folder + "-moved", folder);
        }
    }
}

std::map<FileIdentity, Found> Round::filesOnDisk() const {
    std::map<FileIdentity, Found> found;
    std::string trash = files_.trashFiles();
    std::error_code error;
    for (fs::recursive_directory_iterator it(files_.tree.root(), error), end; !error && it != end;
         it.increment(error)) {
        auto snapshot = FileSnapshot::read(it->path().string());
        if (snapshot && snapshot->isRegularFile) {
            std::string path = it->path().string();
            found.emplace(snapshot->identity, Found{path, PathNames::isInside(path, trash)});
        }
    }
    return found;
}

void Round::checkRun(const CleanupPlan& plan, const CleanupReport& report) {
    auto onDisk = filesOnDisk();
    ASSERT_EQ(report.items.size(), plan.removals.size());
    for (std::size_t i = 0; i < plan.removals.size(); ++i) {
        const PlannedRemoval& removal = plan.removals[i];
        const ItemOutcome& outcome = report.items[i].outcome;
        SCOPED_TRACE(removal.path + " " + ::testing::PrintToString(outcome));
        const Original& original = originals_.at(removal.path);
        // Never gone: in place (where the user left it) or in the Trash.
        auto where = onDisk.find(original.identity);
        ASSERT_NE(where, onDisk.end()) << "a planned picture is gone from the disk";
        EXPECT_EQ(readFile(where->second.path), original.bytes);
        if (!where->second.inTrash) {
            EXPECT_NE(outcome.kind, ItemOutcome::Kind::movedToTrash);
            EXPECT_NE(outcome.kind, ItemOutcome::Kind::unknown);
            continue;
        }
        // In the Trash: the journal says so, and the record leads back.
        EXPECT_EQ(outcome, testing::movedTo(where->second.path));
        auto info = platform::FreedesktopTrash::infoPathFor(where->second.path);
        ASSERT_TRUE(info.has_value());
        EXPECT_NE(readFile(*info).find(
                      "Path=" + platform::FreedesktopTrash::encodedPath(removal.path) + "\n"),
                  std::string::npos);
        // It moved only while one of its kept copies was there and, for
        // identical copies, still held the same bytes. Kept copies are
        // never moved, so that one is there now.
        bool identical = removal.matchKind == MatchKind::identical;
        EXPECT_TRUE(std::ranges::any_of(removal.keepers, [&](const KeeperEvidence& keeper) {
            auto now = FileSnapshot::read(keeper.path);
            return now && now->identity == keeper.snapshot.identity &&
                   (!identical || readFile(keeper.path) == original.bytes);
        })) << "moved without a kept copy";
    }
    // Every group keeps a copy outside the Trash, unless the user deleted or
    // rewrote copies of it.
    for (const auto& group : groups_) {
        bool touched = std::ranges::any_of(group.members, [&](const PhotoAsset& member) {
            return destroyed_.contains(member.path);
        });
        bool kept = std::ranges::any_of(group.members, [&](const PhotoAsset& member) {
            auto where = onDisk.find(member.snapshot.identity);
            return where != onDisk.end() && !where->second.inTrash &&
                   readFile(where->second.path) == originals_.at(member.path).bytes;
        });
        EXPECT_TRUE(kept || touched) << "group " << group.id << " keeps no copy";
    }
}

void Round::putSomeBack(const CleanupPlan& plan, const CleanupReport& report) {
    for (std::size_t i = 0; i < plan.removals.size(); ++i) {
        const PlannedRemoval& removal = plan.removals[i];
        if (report.items[i].outcome.kind != ItemOutcome::Kind::movedToTrash || !chance(0.5)) {
            continue;
        }
        std::string to =
            testing::exists(removal.path) ? Restorer::alternativePath(removal.path) : removal.path;
        RestoreOutcome outcome = Restorer::restore(removal, report.journalPath, to);
        if (outcome.kind != RestoreOutcome::Kind::restored) {
            // Only a folder the user replaced with a link stands in the way.
            EXPECT_TRUE(outcome.kind == RestoreOutcome::Kind::failed ||
                        outcome.kind == RestoreOutcome::Kind::occupied)
                << ::testing::PrintToString(outcome);
            continue;
        }
        ++tally_.putBack;
        EXPECT_EQ(readFile(to), originals_.at(removal.path).bytes);
        EXPECT_FALSE(testing::exists(*report.items[i].outcome.trashPath));
    }
    auto after = CleanupJournal::report(report.journalPath);
    ASSERT_TRUE(after.has_value());
    auto onDisk = filesOnDisk();
    for (const auto& item : after->items) {
        auto where = onDisk.find(originals_.at(item.removal.path).identity);
        ASSERT_NE(where, onDisk.end());
        if (item.outcome.kind == ItemOutcome::Kind::restored) {
            // Through a folder the user replaced with a link, if need be.
            std::error_code error;
            EXPECT_EQ(fs::path(where->second.path), fs::weakly_canonical(item.outcome.text, error));
        }
        EXPECT_EQ(where->second.inTrash, item.outcome.kind == ItemOutcome::Kind::movedToTrash);
    }
}

void Round::run() {
    makeGroups();
    ReviewSession session(groups_, nullptr, {}, {});
    mark(session);
    auto plan = CleanupPlanner::plan(session);
    if (!plan) {
        ASSERT_EQ(plan.error().kind, PlanError::Kind::nothingMarked);
        return;
    }
    changeFiles(*plan);

    auto trasher = std::make_shared<testing::FakeTrasher>();
    for (const auto& removal : plan->removals) {
        if (chance(0.1)) {
            trasher->failFor(removal.path, pick(std::vector<int>{EROFS, EACCES, EIO, ENOENT}));
        }
    }
    CleanupExecutor executor(files_.data, trasher);
    CancellationFlag cancel;
    int stopAfter = chance(0.2) ? between(1, static_cast<int>(plan->removals.size())) : 0;
    auto report = executor.execute(*plan, testing::approvalOf(*plan), cancel, [&](int handled) {
        if (handled == stopAfter) {
            cancel.cancel();
        }
    });
    ASSERT_TRUE(report.has_value()) << report.error().message();
    EXPECT_TRUE(report->finished.has_value());
    ++tally_.plans;
    for (const auto& item : report->items) {
        ++tally_.items;
        std::string kind(rawValue(item.outcome.kind));
        ++tally_.outcomes[kind == "movedToTrash" ? kind : kind + ": " + item.outcome.text];
    }
    checkRun(*plan, *report);
    putSomeBack(*plan, *report);
}

TEST(CleanupSafetyProperty, NoPicturesBytesAreEverGoneFromTheDisk) {
    std::uint64_t seed = numberFromEnvironment("BREVANT_CLEANUP_SEED", kDefaultSeed);
    auto rounds = static_cast<int>(numberFromEnvironment("BREVANT_CLEANUP_ROUNDS", kDefaultRounds));
    Tally tally;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE("BREVANT_CLEANUP_SEED=" + std::to_string(seed) + " round " +
                     std::to_string(round));
        Round(seed, round, tally).run();
        if (HasFatalFailure()) {
            return;
        }
    }
    std::cout << "seed " << seed << ", " << rounds << " rounds: " << tally.plans << " plans, "
              << tally.items << " items, " << tally.putBack << " put back\n";
    for (const auto& [outcome, count] : tally.outcomes) {
        std::cout << "  " << count << " \u00d7 " << outcome << "\n";
    }
    EXPECT_GT(tally.outcomes["movedToTrash"], 0);
}

} // namespace
} // namespace brevant
