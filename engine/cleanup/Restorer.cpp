#include "Restorer.hpp"

#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/cleanup/TrashLocation.hpp"
#include "engine/platform/ExclusiveRename.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/FreedesktopTrash.hpp"
#include "engine/platform/LocaleDate.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/PathNames.hpp"
#include "engine/support/Texts.hpp"
#include "engine/support/Uuid.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fmt/format.h>
#include <set>

namespace brevant {

namespace {

constexpr int kNumberedNames = 999;
constexpr std::size_t kUuidCharacters = 8;
// A clash with a fresh UUID is all but impossible; the bound only keeps a
// broken folder from holding us forever.
constexpr int kUuidAttempts = 16;

std::string joined(const std::string& folder, std::string_view name) {
    return folder == "/" ? fmt::format("/{}", name) : fmt::format("{}/{}", folder, name);
}

std::string nameWith(std::string_view base, std::string_view extension, std::string_view tag) {
    if (extension.empty()) {
        return fmt::format("{} ({})", base, tag);
    }
    return fmt::format("{} ({}).{}", base, tag, extension);
}

bool isFree(const std::string& path) {
    return !FileSnapshot::read(path).has_value();
}

// Pictures are put back in rounds of this many: their putBack entries are
// written and synchronised together, their folders synchronised once, and
// their results written together.
constexpr std::size_t kRound = 256;

// Why a picture cannot be put back at `destination` before anything is
// tried; nothing when it can.
std::optional<RestoreOutcome> precheck(const FileIdentity& trashed,
                                       const std::optional<std::string>& trashPath,
                                       const std::string& destination) {
    if (!trashPath) {
        return RestoreOutcome::notInTrash();
    }
    auto inTrash = FileSnapshot::read(*trashPath);
    if (!inTrash || inTrash->identity != trashed) {
        std::string trashFolder = PathNames::parentFolder(*trashPath);
        if (!inTrash && !platform::isDirectory(trashFolder)) {
            return RestoreOutcome::failed(
                fmt::format("Its Trash, {}, is not there \u2014 perhaps its drive is not connected",
                            PathNames::parentFolder(trashFolder)));
        }
        return RestoreOutcome::notInTrash();
    }
    std::string folder = PathNames::parentFolder(destination);
    if (!platform::isDirectory(folder)) {
        return RestoreOutcome::failed(
            fmt::format("Its folder, {}, is not there any more \u2014 perhaps its drive is not "
                        "connected",
                        folder));
    }
    return std::nullopt;
}

RestoreOutcome renamed(const std::string& trashPath, const std::string& destination) {
    auto moved = platform::renameNoReplace(trashPath, destination);
    if (moved) {
        return RestoreOutcome::restored(destination);
    }
    if (moved.error() == EEXIST) {
        return RestoreOutcome::occupied(destination);
    }
    return RestoreOutcome::failed(platform::errorText(moved.error()));
}

// One picture of a round: what it is, where it lies, and what came of it
// (set early when it cannot be tried).
struct Attempt {
    const Restorer::Request* request = nullptr;
    const PlannedRemoval* removal = nullptr;
    std::optional<std::string> trashPath;
    std::optional<RestoreOutcome> outcome;
    // The result goes into the journal: the picture went to the Trash once.
    bool recorded = false;
};

std::vector<std::string> trashFoldersOf(const CleanupPlan& plan) {
    std::vector<std::string> folders;
    for (const auto& removal : plan.removals) {
        for (auto& folder : TrashLocation::candidates(removal.path)) {
            if (std::ranges::find(folders, folder) == folders.end()) {
                folders.push_back(std::move(folder));
            }
        }
    }
    return folders;
}

// The journal held and read once; settled first when a run or a Put Back
// was cut short, so that every picture in the Trash is known.
class OpenJournal {
public:
    static std::expected<OpenJournal, std::string> open(const std::string& path) {
        auto journal = CleanupJournal::appendingTo(path);
        if (!journal) {
            return std::unexpected(journal.error().description);
        }
        auto parsed = CleanupJournal::read(path);
        if (parsed && parsed->needsReconciling()) {
            if (auto settled = journal->reconcile(trashFoldersOf(parsed->plan)); !settled) {
                return std::unexpected(settled.error().description);
            }
            parsed = CleanupJournal::read(path);
        }
        if (!parsed) {
            return std::unexpected(parsed.error().description);
        }
        return OpenJournal(std::move(*journal), std::move(*parsed));
    }

    CleanupJournal& journal() { return journal_; }

    [[nodiscard]] const CleanupJournal::Parsed& parsed() const { return parsed_; }

    [[nodiscard]] const PlannedRemoval* removal(const std::string& item) const {
        const auto& removals = parsed_.plan.removals;
        auto found = std::ranges::find(removals, item, &PlannedRemoval::path);
        return found == removals.end() ? nullptr : &*found;
    }

    // Where the journal has the item in the Trash; nothing when it has not.
    [[nodiscard]] std::optional<std::string> trashPath(const std::string& item) const {
        auto recorded = parsed_.outcomes.find(item);
        if (recorded == parsed_.outcomes.end() ||
            recorded->second.outcome.kind != ItemOutcome::Kind::movedToTrash) {
            return std::nullopt;
        }
        return recorded->second.outcome.trashPath;
    }

    // The picture was put back before.
    [[nodiscard]] bool wasMoved(const std::string& item) const {
        auto recorded = parsed_.outcomes.find(item);
        return recorded != parsed_.outcomes.end() &&
               recorded->second.outcome.kind == ItemOutcome::Kind::restored;
    }

private:
    OpenJournal(CleanupJournal journal, CleanupJournal::Parsed parsed)
        : journal_(std::move(journal))
        , parsed_(std::move(parsed)) {}

    CleanupJournal journal_;
    CleanupJournal::Parsed parsed_;
};

using Entry = CleanupJournal::Entry;

Attempt prepared(const OpenJournal& open, const Restorer::Request& request) {
    Attempt attempt{.request = &request, .removal = open.removal(request.itemID)};
    if (attempt.removal == nullptr) {
        attempt.outcome = RestoreOutcome::notInTrash();
        return attempt;
    }
    attempt.trashPath = open.trashPath(request.itemID);
    attempt.recorded = attempt.trashPath || open.wasMoved(request.itemID);
    if (!attempt.trashPath) {
        // Back already (noted), or never moved (nothing to note).
        attempt.outcome = RestoreOutcome::notInTrash();
        return attempt;
    }
    attempt.outcome = precheck(open.parsed().trashedIdentity(*attempt.removal), attempt.trashPath,
                               request.destination);
    return attempt;
}

// Renames the round's pictures that passed their checks, all after their
// putBack entries are on disk, then makes the new names and the dropped
// Trash records durable, once per folder.
std::expected<void, std::string> moveRound(OpenJournal& open, std::vector<Attempt>& round,
                                           Date now) {
    std::vector<Entry> intents;
    for (const auto& attempt : round) {
        if (!attempt.outcome && attempt.trashPath) {
            intents.push_back(Entry::ofPutBack(attempt.request->itemID, *attempt.trashPath,
                                               attempt.request->destination, now));
        }
    }
    if (auto written = open.journal().write(intents); !written) {
        return std::unexpected(written.error().description);
    }
    std::set<std::string> folders;
    std::vector<std::string> records;
    for (auto& attempt : round) {
        if (attempt.outcome || !attempt.trashPath) {
            continue;
        }
        const std::string& trashPath = *attempt.trashPath;
        RestoreOutcome outcome = renamed(trashPath, attempt.request->destination);
        if (outcome.kind == RestoreOutcome::Kind::restored) {
            folders.insert(PathNames::parentFolder(attempt.request->destination));
            folders.insert(PathNames::parentFolder(trashPath));
            records.push_back(trashPath);
        }
        attempt.outcome = std::move(outcome);
    }
    for (const auto& folder : folders) {
        platform::syncFolder(folder);
    }
    std::set<std::string> infoFolders;
    for (const auto& trashPath : records) {
        auto record = platform::FreedesktopTrash::infoPathFor(trashPath);
        if (record && platform::FreedesktopTrash::removeTrashInfo(trashPath, false)) {
            infoFolders.insert(PathNames::parentFolder(*record));
        }
    }
    for (const auto& folder : infoFolders) {
        platform::syncFolder(folder);
    }
    return {};
}

// The results of a round as the journal keeps them: `restored` as the
// item's outcome, the others as notes. Write failures do not change them;
// reconciliation settles what they leave open.
void recordRound(OpenJournal& open, const std::vector<Attempt>& round, Date now) {
    std::vector<Entry> entries;
    for (const auto& attempt : round) {
        if (!attempt.outcome) {
            continue;
        }
        const std::string& item = attempt.request->itemID;
        const RestoreOutcome& outcome = *attempt.outcome;
        if (outcome.kind == RestoreOutcome::Kind::restored) {
            entries.push_back(Entry::ofOutcome(item, ItemOutcome::restored(outcome.path), now));
        } else if (attempt.recorded) {
            if (auto note = Restorer::noteFor(outcome, now)) {
                entries.push_back(Entry::ofNote(item, *note, now));
            }
        }
    }
    (void)open.journal().write(entries);
}

std::expected<std::vector<Attempt>, std::string>
putBackRound(OpenJournal& open, const std::vector<Restorer::Request>& requests, std::size_t first,
             std::size_t count, const CancellationFlag& cancel, Date now) {
    std::vector<Attempt> round;
    for (std::size_t i = first; i < std::min(first + count, requests.size()); ++i) {
        if (cancel.isCancelled()) {
            break;
        }
        round.push_back(prepared(open, requests[i]));
    }
    if (auto moved = moveRound(open, round, now); !moved) {
        return std::unexpected(moved.error());
    }
    recordRound(open, round, now);
    return round;
}

} // namespace

std::expected<std::vector<Restorer::Result>, std::string>
Restorer::restore(const Batch& batch, const CancellationFlag& cancel, const Progress& progress) {
    // Nothing asked for: the journal is left exactly as it is (one cut while
    // its plan was written is never touched).
    if (batch.requests.empty()) {
        return std::vector<Result>{};
    }
    std::optional<ChangeLock> taken;
    if (batch.held == nullptr) {
        platform::DataFolder data{
            PathNames::parentFolder(PathNames::parentFolder(batch.journalPath))};
        auto held = ChangeLock::take(data, batch.waiting);
        if (!held) {
            return std::unexpected(held.error().message());
        }
        taken = std::move(*held);
    }
    auto open = OpenJournal::open(batch.journalPath);
    if (!open) {
        return std::unexpected(open.error());
    }
    std::vector<Result> results;
    std::vector<Request> beside;
    const auto& requests = batch.requests;
    auto total = static_cast<int>(requests.size());
    int done = 0;
    for (std::size_t first = 0; first < requests.size() && !cancel.isCancelled(); first += kRound) {
        auto round = putBackRound(*open, requests, first, kRound, cancel, batch.now);
        if (!round) {
            return std::unexpected(round.error());
        }
        // Every attempt of a round comes back settled.
        for (const auto& attempt : *round) {
            if (!attempt.outcome) {
                continue;
            }
            if (batch.besideWhenOccupied &&
                attempt.outcome->kind == RestoreOutcome::Kind::occupied) {
                beside.push_back(
                    {attempt.request->itemID, alternativePath(attempt.request->destination)});
            } else {
                results.push_back({attempt.request->itemID, *attempt.outcome});
            }
            if (progress) {
                progress(++done, total);
            }
        }
    }
    CancellationFlag finishing;
    for (std::size_t first = 0; first < beside.size(); first += kRound) {
        auto round = putBackRound(*open, beside, first, kRound, finishing, batch.now);
        if (!round) {
            return std::unexpected(round.error());
        }
        for (const auto& attempt : *round) {
            if (attempt.outcome) {
                results.push_back({attempt.request->itemID, *attempt.outcome});
            }
        }
    }
    return results;
}

RestoreOutcome Restorer::restore(const PlannedRemoval& removal, const std::string& journalPath,
                                 const std::string& destination, Date now) {
    Batch batch{.journalPath = journalPath, .requests = {{removal.path, destination}}, .now = now};
    CancellationFlag never;
    auto results = restore(batch, never);
    if (!results) {
        return RestoreOutcome::failed(results.error());
    }
    if (results->empty()) {
        return RestoreOutcome::notInTrash();
    }
    return results->front().outcome;
}

RestoreOutcome Restorer::attempt(const FileIdentity& trashed,
                                 const std::optional<std::string>& trashPath,
                                 const std::string& destination) {
    if (auto refused = precheck(trashed, trashPath, destination)) {
        return *refused;
    }
    if (!trashPath) {
        return RestoreOutcome::notInTrash();
    }
    auto moved = platform::FreedesktopTrash::putBack(*trashPath, destination);
    if (!moved) {
        if (moved.error() == EEXIST) {
            return RestoreOutcome::occupied(destination);
        }
        return RestoreOutcome::failed(platform::errorText(moved.error()));
    }
    return RestoreOutcome::restored(destination);
}

std::optional<std::string> Restorer::noteFor(const RestoreOutcome& outcome, Date when) {
    std::string date =
        platform::shortDateTime(static_cast<std::int64_t>(std::floor(when.unixSeconds())));
    switch (outcome.kind) {
    case RestoreOutcome::Kind::restored:
        return std::nullopt;
    case RestoreOutcome::Kind::occupied:
        return fmt::format("Put Back refused {}: something else is now at {}, and it is never "
                           "overwritten.",
                           date, outcome.path);
    case RestoreOutcome::Kind::notInTrash:
        return fmt::format("Put Back tried {}: it is not in the Trash any more (emptied, or put "
                           "back another way).",
                           date);
    case RestoreOutcome::Kind::failed:
        return fmt::format("Put Back failed {}: {}. It is still in the Trash.", date,
                           outcome.reason);
    }
    return std::nullopt;
}

std::string Restorer::alternativePath(const std::string& path) {
    std::string folder = PathNames::parentFolder(path);
    std::string name = PathNames::lastComponent(path);
    std::string_view base = PathNames::deletingExtension(name);
    std::string_view extension = PathNames::extension(name);
    for (int n = 1; n <= kNumberedNames; ++n) {
        std::string tag = n == 1 ? std::string("restored") : fmt::format("restored {}", n);
        std::string candidate = joined(folder, nameWith(base, extension, tag));
        if (isFree(candidate)) {
            return candidate;
        }
    }
    std::string candidate;
    for (int attempt = 0; attempt < kUuidAttempts; ++attempt) {
        std::string piece = Uuid::make().text().substr(0, kUuidCharacters);
        candidate = joined(folder, nameWith(base, extension, "restored " + piece));
        if (isFree(candidate)) {
            break;
        }
    }
    return candidate;
}

std::string Restorer::generalNote() {
    return fmt::format("Space is freed when you empty the Trash. An emptied Trash cannot be "
                       "undone by {}.",
                       texts::kApplication);
}

} // namespace brevant
