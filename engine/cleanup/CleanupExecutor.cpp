#include "CleanupExecutor.hpp"

#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/cleanup/ExecutorTexts.hpp"
#include "engine/cleanup/TrashMove.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/review/LockStore.hpp"
#include "engine/scan/ContentReader.hpp"
#include "engine/scan/PathRules.hpp"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

namespace brevant {

namespace {

using Entry = CleanupJournal::Entry;
namespace sentences = executor_texts;

constexpr std::string_view kNotReadBack = "the record could not be read back";

// An empty root holds nothing, and only absolute paths lie inside one.
bool inside(const std::string& path, const std::string& root) {
    return !root.empty() && path.starts_with('/') && PathNames::isInside(path, root);
}

bool insideChosenRoots(const PlannedRemoval& removal, const CleanupPlan& plan) {
    return inside(removal.path, removal.root) &&
           std::ranges::any_of(plan.roots,
                               [&](const std::string& root) { return inside(removal.path, root); });
}

// A folder on the way that is gone is not a link: the nearest folder still
// there is resolved instead, so a removed folder or a disconnected drive
// reads as the item being gone.
bool linkOnTheWay(const std::string& path) {
    if (PathRules::parentHasNoLinks(path)) {
        return false;
    }
    std::string folder = PathNames::parentFolder(path);
    while (!folder.empty() && folder != "/" && !FileSnapshot::read(folder)) {
        folder = PathNames::parentFolder(folder);
    }
    if (folder.empty()) {
        return true;
    }
    auto real = platform::realPath(folder);
    return !real || *real != folder;
}

bool isIdenticalRemoval(const PlannedRemoval& removal) {
    return !removal.matchKind || *removal.matchKind == MatchKind::identical;
}

// What one kept copy says: it passes, it fails with a word, or it tells
// something about the item itself (the item changed while the two were
// compared, or the run was cancelled meanwhile).
struct KeeperVerdict {
    bool passes = false;
    std::string word;
    std::optional<std::string> itemReason;
};

KeeperVerdict failsWith(std::string_view word) {
    return {.word = std::string(word)};
}

KeeperVerdict comparedBytes(const PlannedRemoval& removal, const KeeperEvidence& keeper,
                            const CancellationFlag& cancel) {
    auto same = ContentReader::sameBytes(removal.path, removal.snapshot, keeper.path,
                                         keeper.snapshot, cancel);
    if (same) {
        return *same ? KeeperVerdict{.passes = true} : failsWith(sentences::kKeeperNotIdentical);
    }
    switch (same.error().kind) {
    case ContentReader::Failure::Kind::cancelled:
        return {.itemReason = std::string(sentences::kCancelled)};
    case ContentReader::Failure::Kind::changed:
        if (same.error().path == removal.path) {
            return {.itemReason = std::string(sentences::kChanged)};
        }
        return failsWith(sentences::kKeeperChanged);
    case ContentReader::Failure::Kind::unreadable:
        // The picture itself is what could not be read, not its kept copy.
        if (same.error().path == removal.path) {
            return {.itemReason = std::string(sentences::kUnreadable)};
        }
        return failsWith(sentences::kKeeperUnreadable);
    }
    return failsWith(sentences::kKeeperUnreadable);
}

KeeperVerdict keeperVerdict(const PlannedRemoval& removal, const KeeperEvidence& keeper,
                            const CleanupExecutor::Trashed& trashed,
                            const CancellationFlag& cancel) {
    auto now = FileSnapshot::read(keeper.path);
    if (!now) {
        // Gone because this run trashed it under another name of the plan.
        return failsWith(trashed.contains(keeper.snapshot.identity) ? sentences::kKeeperMoved
                                                                    : sentences::kKeeperMissing);
    }
    if (now->isSymbolicLink || !now->isRegularFile || !TrashMove::sameFile(*now, keeper.snapshot)) {
        return failsWith(sentences::kKeeperChanged);
    }
    bool identical = isIdenticalRemoval(removal);
    if (identical && now->isDataless()) {
        return failsWith(sentences::kKeeperInCloud);
    }
    if (trashed.contains(now->identity) || now->identity == removal.snapshot.identity) {
        return failsWith(sentences::kKeeperMoved);
    }
    if (!identical) {
        return {.passes = true};
    }
    return comparedBytes(removal, keeper, cancel);
}

std::optional<std::string> keeperLeft(const PlannedRemoval& removal,
                                      const CleanupExecutor::Trashed& trashed,
                                      const CancellationFlag& cancel) {
    std::vector<std::string> words;
    for (const auto& keeper : removal.keepers) {
        KeeperVerdict verdict = keeperVerdict(removal, keeper, trashed, cancel);
        if (verdict.passes) {
            return std::nullopt;
        }
        if (verdict.itemReason) {
            return verdict.itemReason;
        }
        words.push_back(std::move(verdict.word));
    }
    return sentences::noKeeperLeft(removal.matchKind, std::move(words));
}

// Moves the item to the Trash, its intent written first.
TrashMove::Result moveToTrash(const Trasher& trasher, CleanupJournal& journal,
                              const PlannedRemoval& removal) {
    return TrashMove::run(
        trasher, removal.path, removal.snapshot, [&](const std::optional<std::string>& trashPath) {
            return journal.write(Entry::ofIntent(removal.path, Date::now(), trashPath)).has_value();
        });
}

// Outcome entries that cannot be written are left to reconciliation.
void record(CleanupJournal& journal, const PlannedRemoval& removal, ItemOutcome outcome,
            const std::optional<std::string>& note = {}) {
    std::vector<Entry> entries{Entry::ofOutcome(removal.path, std::move(outcome), Date::now())};
    if (note) {
        entries.push_back(Entry::ofNote(removal.path, *note, Date::now()));
    }
    (void)journal.write(entries);
}

// The lock store as it is on disk, read again whenever its file changes, so
// that a copy locked while the run goes on stays too.
class CurrentLocks {
public:
    explicit CurrentLocks(std::string path)
        : path_(std::move(path)) {}

    // Why the locks cannot be known now; nothing when they can.
    [[nodiscard]] std::optional<std::string> damage() { return current().damage(); }

    // Why the item must stay; nothing when no lock holds it.
    [[nodiscard]] std::optional<std::string> reasonToKeep(const PlannedRemoval& removal) {
        LockStore& store = current();
        if (store.damage()) {
            return std::string(sentences::kLocksUnreadable);
        }
        if (store.isLocked(removal.path, removal.snapshot.identity)) {
            return std::string(sentences::kLockedSinceScan);
        }
        return std::nullopt;
    }

private:
    LockStore& current() {
        auto now = FileSnapshot::read(path_);
        if (!store_ || now != seen_) {
            store_ = std::make_unique<LockStore>(path_);
            seen_ = now;
        }
        return *store_;
    }

    std::string path_;
    std::optional<FileSnapshot> seen_;
    std::unique_ptr<LockStore> store_;
};

} // namespace

CleanupExecutor::CleanupExecutor(platform::DataFolder data, std::shared_ptr<const Trasher> trasher)
    : data_(std::move(data))
    , trasher_(trasher ? std::move(trasher) : std::make_shared<FileManagerTrasher>()) {}

std::optional<ExecutionRefusal> CleanupExecutor::refusal(const CleanupPlan& plan,
                                                         const CleanupApproval& approval) const {
    if (approval.planID != plan.id) {
        return ExecutionRefusal::approvalDoesNotMatch();
    }
    const auto& removals = plan.removals;
    if (std::ranges::any_of(removals, [](const PlannedRemoval& removal) {
            return removal.path.starts_with(CleanupPlanner::kLibraryPrefix);
        })) {
        return ExecutionRefusal::libraryPhotos();
    }
    // The kinds in their order, each over every removal.
    for (auto application : EnumCases<CatalogApplication>::kAll) {
        if (std::ranges::any_of(removals, [application](const PlannedRemoval& removal) {
                return removal.catalog && removal.catalog->application == application;
            })) {
            return ExecutionRefusal::catalogPhotos(application);
        }
    }
    // Anything at the journal's name, even a dangling link, means this plan
    // was handed over before.
    if (platform::statusOfPath(CleanupJournal::pathFor(plan.id, journalDirectory()))) {
        return ExecutionRefusal::alreadyRun();
    }
    return std::nullopt;
}

std::expected<CleanupReport, ExecutionRefusal>
CleanupExecutor::execute(const CleanupPlan& plan, const CleanupApproval& approval,
                         const CancellationFlag& cancel, const Progress& progress) const {
    if (auto refused = refusal(plan, approval)) {
        return std::unexpected(std::move(*refused));
    }
    auto held = ChangeLock::take(data_, waiting_);
    if (!held) {
        return std::unexpected(ExecutionRefusal::busy(held.error().message()));
    }
    CurrentLocks locks(data_.lockStore());
    if (auto damage = locks.damage()) {
        return std::unexpected(ExecutionRefusal::locksUnreadable(
            LockStore::damageMessage(data_.lockStore(), *damage)));
    }
    auto created = CleanupJournal::create(plan, journalDirectory());
    if (!created) {
        return std::unexpected(ExecutionRefusal::journalUnavailable(created.error().description));
    }
    std::optional<CleanupJournal> journal(std::move(*created));
    Trashed trashed;
    int handled = 0;
    for (const auto& removal : plan.removals) {
        if (cancel.isCancelled()) {
            record(*journal, removal, ItemOutcome::skipped(std::string(sentences::kCancelled)));
            continue;
        }
        std::optional<std::string> reason = locks.reasonToKeep(removal);
        if (!reason) {
            reason = check(removal, plan, trashed, cancel);
        }
        if (reason) {
            record(*journal, removal, ItemOutcome::skipped(std::move(*reason)));
        } else if (TrashMove::Result move = moveToTrash(*trasher_, *journal, removal);
                   move.outcome) {
            if (move.trashed) {
                trashed.insert(*move.trashed);
            }
            record(*journal, removal, std::move(*move.outcome), move.note);
        }
        ++handled;
        if (progress) {
            progress(handled);
        }
    }
    (void)journal->write(Entry::ofFinished(Date::now()));
    std::string path = journal->path();
    journal.reset();
    auto report = CleanupJournal::report(path);
    if (!report) {
        return std::unexpected(ExecutionRefusal::journalUnavailable(std::string(kNotReadBack)));
    }
    return std::move(*report);
}

std::optional<std::string> CleanupExecutor::check(const PlannedRemoval& removal,
                                                  const CleanupPlan& plan, const Trashed& trashed,
                                                  const CancellationFlag& cancel) {
    if (!insideChosenRoots(removal, plan)) {
        return std::string(sentences::kOutsideRoots);
    }
    if (linkOnTheWay(removal.path)) {
        return std::string(sentences::kFolderReplaced);
    }
    auto now = FileSnapshot::read(removal.path);
    if (!now) {
        bool denied = platform::statusErrorOf(removal.path) == EACCES;
        return std::string(denied ? sentences::kNoPermission : sentences::kGone);
    }
    if (now->isSymbolicLink) {
        return std::string(sentences::kReplacedWithLink);
    }
    if (now->isDataless()) {
        return std::string(sentences::kInCloud);
    }
    if (!now->isRegularFile || !TrashMove::sameFile(*now, removal.snapshot)) {
        return std::string(sentences::kChanged);
    }
    if (now->linkCount >= 2) {
        return std::string(sentences::kHardLink);
    }
    return keeperLeft(removal, trashed, cancel);
}

std::string CleanupExecutor::explain(const TrashError& error) {
    return sentences::trashRefused(error.code, error.description);
}

} // namespace brevant
