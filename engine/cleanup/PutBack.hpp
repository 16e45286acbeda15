#pragma once

#include "engine/cleanup/ChangeLock.hpp"
#include "engine/cleanup/Journal.hpp"
#include "engine/cleanup/RestoreOutcome.hpp"
#include "engine/cleanup/Trasher.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/PathNames.hpp"

#include <algorithm>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// What Put Back is asked for and answers, whatever the kind of journal.
struct PutBackRequest {
    // One item of the run, by its planned path, and where it goes.
    struct Item {
        std::string itemID;
        std::string destination;
    };

    // What became of one item asked for.
    struct Result {
        std::string itemID;
        RestoreOutcome outcome;
        // What became of the file that stood in for it, when the kind has one
        // (a compression's copy goes to the Trash), as a sentence.
        std::optional<std::string> companion;

        friend bool operator==(const Result&, const Result&) = default;
    };

    std::string journalPath;
    std::vector<Item> requests;
    // An item whose place is taken goes back under `beside` of its
    // destination instead, after the refusal is noted.
    bool besideWhenOccupied = false;
    // How to wait while another run holds the change lock; without it the
    // Put Back is refused at once.
    ChangeLock::Waiting waiting;
    // The change lock, when the caller took it already (to read the journal
    // it chose the items from under it).
    const ChangeLock* held = nullptr;
    // Moves a kind's companion files to the Trash; the freedesktop.org
    // Trash when none is given.
    std::shared_ptr<const Trasher> trasher;
    Date now = Date::now();

    // Called after each item, with the number done and the total.
    using Progress = std::function<void(int done, int total)>;
};

// The steps of Put Back that do not depend on the kind of journal.
namespace put_back {

// Why an item cannot be put back at `destination` before anything is
// tried; nothing when it can.
[[nodiscard]] std::optional<RestoreOutcome> precheck(const FileIdentity& trashed,
                                                     const std::optional<std::string>& trashPath,
                                                     const std::string& destination);

// Renames without replacing: restored, occupied, or failed with the system's
// words.
[[nodiscard]] RestoreOutcome renamed(const std::string& trashPath, const std::string& destination);

// Makes renamed names durable and drops the Trash records of the items put
// back, once per folder.
void settleMoved(const std::vector<std::pair<std::string, std::string>>& trashPathAndDestination);

// The journal's note for an outcome other than `restored`.
[[nodiscard]] std::optional<std::string> noteFor(const RestoreOutcome& outcome, Date when);

// A free name beside `path` ("IMG_1 (restored).jpg", ...).
[[nodiscard]] std::string alternativePath(const std::string& path);

// The data folder a journal lies in (its folder's parent).
[[nodiscard]] std::string dataFolderOf(const std::string& journalPath);

// Items are put back in rounds of this many: their putBack entries are
// written and synchronised together, their folders synchronised once, and
// their results written together.
inline constexpr std::size_t kRound = 256;

} // namespace put_back

// Put Back for a journal of kind `Kind`: moves items the run moved to the
// Trash back where they were, never over anything, journalled like a move (a
// putBack entry before, the result after), under the data folder's change
// lock and the journal's own lock, reading the journal once. After each
// round, `Kind::afterPutBack` handles what goes with the items put back (a
// compression moves their copies to the Trash, journalled the same way).
template <class Kind> struct PutBack {
    using Result = PutBackRequest::Result;
    using JournalType = Journal<Kind>;
    using Entry = typename JournalType::Entry;
    using Parsed = typename JournalType::Parsed;

    // The journal held and read once; settled first when a run or a Put Back
    // was cut short, so that every item in the Trash is known.
    class OpenJournal {
    public:
        static std::expected<OpenJournal, std::string> open(const std::string& path) {
            auto journal = JournalType::appendingTo(path);
            if (!journal) {
                return std::unexpected(journal.error().description);
            }
            auto parsed = JournalType::read(path);
            if (parsed && parsed->needsReconciling()) {
                auto folders = trashFoldersOf(JournalType::plannedPaths(parsed->plan),
                                              &TrashLocation::candidates);
                if (auto settled = journal->reconcile(folders); !settled) {
                    return std::unexpected(settled.error().description);
                }
                parsed = JournalType::read(path);
            }
            if (!parsed) {
                return std::unexpected(parsed.error().description);
            }
            return OpenJournal(std::move(*journal), std::move(*parsed));
        }

        JournalType& journal() { return journal_; }

        [[nodiscard]] const Parsed& parsed() const { return parsed_; }

        // Read again after a round wrote to the journal.
        void reread() {
            if (auto parsed = JournalType::read(journal_.path())) {
                parsed_ = std::move(*parsed);
            }
        }

        [[nodiscard]] const typename Kind::Item* item(const std::string& id) const {
            for (const auto& item : Kind::items(parsed_.plan)) {
                if (Kind::itemID(item) == id) {
                    return &item;
                }
            }
            return nullptr;
        }

        // The item was put back before.
        [[nodiscard]] bool wasMoved(const std::string& id) const {
            auto recorded = parsed_.outcomes.find(id);
            return recorded != parsed_.outcomes.end() &&
                   recorded->second.outcome.kind == ItemOutcome::Kind::restored;
        }

    private:
        OpenJournal(JournalType journal, Parsed parsed)
            : journal_(std::move(journal))
            , parsed_(std::move(parsed)) {}

        JournalType journal_;
        Parsed parsed_;
    };

    // Puts the items back in request order. Each one's file in the Trash
    // must be the one the run moved (same device and inode; a different file
    // of that name is never put back) and its destination's folder must
    // exist. Results come for the items attempted: a cancellation leaves the
    // rest out. Refused with a sentence, before anything moves, when another
    // run holds the change lock or the journal, or the journal cannot be read
    // or written.
    [[nodiscard]] static std::expected<std::vector<Result>, std::string>
    restore(const PutBackRequest& batch, const CancellationFlag& cancel,
            const PutBackRequest::Progress& progress = {}) {
        // Nothing asked for: the journal is left exactly as it is (one cut
        // while its plan was written is never touched).
        if (batch.requests.empty()) {
            return std::vector<Result>{};
        }
        std::optional<ChangeLock> taken;
        if (batch.held == nullptr) {
            platform::DataFolder data{put_back::dataFolderOf(batch.journalPath)};
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
        std::vector<PutBackRequest::Item> beside;
        const auto& requests = batch.requests;
        auto total = static_cast<int>(requests.size());
        int done = 0;
        for (std::size_t first = 0; first < requests.size() && !cancel.isCancelled();
             first += put_back::kRound) {
            auto round = putBackRound(*open, batch, requests, first, cancel);
            if (!round) {
                return std::unexpected(round.error());
            }
            for (auto& result : *round) {
                if (batch.besideWhenOccupied &&
                    result.outcome.kind == RestoreOutcome::Kind::occupied) {
                    beside.push_back({result.itemID, put_back::alternativePath(
                                                         findRequest(requests, result.itemID))});
                } else {
                    results.push_back(std::move(result));
                }
                if (progress) {
                    progress(++done, total);
                }
            }
        }
        CancellationFlag finishing;
        for (std::size_t first = 0; first < beside.size(); first += put_back::kRound) {
            auto round = putBackRound(*open, batch, beside, first, finishing);
            if (!round) {
                return std::unexpected(round.error());
            }
            std::ranges::move(*round, std::back_inserter(results));
        }
        return results;
    }

private:
    // One item of a round: what it is, where it lies, and what came of it
    // (set early when it cannot be tried).
    struct Attempt {
        const PutBackRequest::Item* request = nullptr;
        const typename Kind::Item* item = nullptr;
        std::optional<std::string> trashPath;
        std::optional<RestoreOutcome> outcome;
        // The result goes into the journal: the item went to the Trash once.
        bool recorded = false;
    };

    static const std::string& findRequest(const std::vector<PutBackRequest::Item>& requests,
                                          const std::string& itemID) {
        auto found = std::ranges::find(requests, itemID, &PutBackRequest::Item::itemID);
        return found->destination;
    }

    static Attempt prepared(const OpenJournal& open, const PutBackRequest::Item& request) {
        Attempt attempt{.request = &request, .item = open.item(request.itemID)};
        if (attempt.item == nullptr) {
            attempt.outcome = RestoreOutcome::notInTrash();
            return attempt;
        }
        attempt.trashPath = open.parsed().trashPathOf(request.itemID);
        attempt.recorded = attempt.trashPath || open.wasMoved(request.itemID);
        if (!attempt.trashPath) {
            // Back already (noted), or never moved (nothing to note).
            attempt.outcome = RestoreOutcome::notInTrash();
            return attempt;
        }
        attempt.outcome = put_back::precheck(open.parsed().trashedIdentity(*attempt.item),
                                             attempt.trashPath, request.destination);
        return attempt;
    }

    // Renames the round's items that passed their checks, all after their
    // putBack entries are on disk, then makes the new names and the dropped
    // Trash records durable.
    static std::expected<void, std::string> moveRound(OpenJournal& open,
                                                      std::vector<Attempt>& round, Date now) {
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
        std::vector<std::pair<std::string, std::string>> moved;
        for (auto& attempt : round) {
            if (attempt.outcome || !attempt.trashPath) {
                continue;
            }
            const std::string& trashPath = *attempt.trashPath;
            RestoreOutcome outcome = put_back::renamed(trashPath, attempt.request->destination);
            if (outcome.kind == RestoreOutcome::Kind::restored) {
                moved.emplace_back(trashPath, attempt.request->destination);
            }
            attempt.outcome = std::move(outcome);
        }
        put_back::settleMoved(moved);
        return {};
    }

    // The results of a round as the journal keeps them: `restored` as the
    // item's outcome, the others as notes. Write failures do not change them;
    // reconciliation settles what they leave open.
    static void recordRound(OpenJournal& open, const std::vector<Attempt>& round, Date now) {
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
                if (auto note = put_back::noteFor(outcome, now)) {
                    entries.push_back(Entry::ofNote(item, *note, now));
                }
            }
        }
        (void)open.journal().write(entries);
    }

    static std::expected<std::vector<Result>, std::string>
    putBackRound(OpenJournal& open, const PutBackRequest& batch,
                 const std::vector<PutBackRequest::Item>& requests, std::size_t first,
                 const CancellationFlag& cancel) {
        std::vector<Attempt> round;
        for (std::size_t i = first; i < std::min(first + put_back::kRound, requests.size()); ++i) {
            if (cancel.isCancelled()) {
                break;
            }
            round.push_back(prepared(open, requests[i]));
        }
        if (auto moved = moveRound(open, round, batch.now); !moved) {
            return std::unexpected(moved.error());
        }
        recordRound(open, round, batch.now);
        std::vector<Result> results;
        std::vector<std::string> restored;
        // Every attempt of a round comes back settled.
        for (const auto& attempt : round) {
            if (!attempt.outcome) {
                continue;
            }
            if (attempt.outcome->kind == RestoreOutcome::Kind::restored) {
                restored.push_back(attempt.request->itemID);
            }
            results.push_back({attempt.request->itemID, *attempt.outcome});
        }
        if (!restored.empty()) {
            auto companions = Kind::afterPutBack(open.journal(), open.parsed(), restored, batch);
            for (auto& result : results) {
                if (auto companion = companions.find(result.itemID);
                    companion != companions.end()) {
                    result.companion = companion->second;
                }
            }
            if (!companions.empty()) {
                open.reread();
            }
        }
        return results;
    }
};

} // namespace brevant
