#pragma once

#include "engine/cleanup/ItemOutcome.hpp"
#include "engine/cleanup/JournalEntry.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/Date.hpp"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace brevant {

struct RecordedOutcome {
    ItemOutcome outcome;
    Date at;

    friend bool operator==(const RecordedOutcome&, const RecordedOutcome&) = default;
};

// A Put Back written down as begun and not yet as done.
struct PendingPutBack {
    std::string trashPath;
    std::string destination;

    friend bool operator==(const PendingPutBack&, const PendingPutBack&) = default;
};

// A copy written for an item and about to take, or given, its name.
struct WrittenCopy {
    std::string temporary;
    std::string path;
    // The file as written and checked, before it took its name.
    FileSnapshot snapshot;

    friend bool operator==(const WrittenCopy&, const WrittenCopy&) = default;
};

// A file a journal moves: a planned item, or a copy it wrote.
struct JournalFileItem {
    std::string path;
    FileIdentity identity;
};

// What any journal says once its lines are folded, its plan aside. Keys are
// item ids (the items' paths, a copy's own path for its moves).
struct JournalState {
    // When the plan line cannot be read, the plan holds only the items the
    // other lines name, by path, and the id from the file's name.
    bool planDamaged = false;
    // Not one whole line: the run was cut short while writing its plan,
    // before anything could move. Never reconciled.
    bool cutBeforePlan = false;
    // The date of the plan entry (of the first readable one when the plan
    // is damaged).
    Date started;
    std::set<std::string> intents;
    // The Trash paths the intents named, in file order.
    std::map<std::string, std::vector<std::string>> reserved;
    // The latest outcome of each item: a later one replaces an earlier,
    // which is how Put Back turns movedToTrash into restored.
    std::map<std::string, RecordedOutcome> outcomes;
    std::map<std::string, std::vector<std::string>> notes;
    // Put Backs begun whose result (an outcome or a note) is not written.
    std::map<std::string, PendingPutBack> putBacks;
    // The temporary files named for each item's copy, in file order.
    std::map<std::string, std::vector<std::string>> temporaries;
    // The copy each item was given (the latest).
    std::map<std::string, WrittenCopy> copies;
    std::optional<Date> finished;
    // Lines that do not decode (a line torn by a crash among them).
    int damagedLines = 0;

    // The run was cut short, an item that began to move has no outcome
    // (its line is damaged), or a Put Back was cut short: where things
    // are must be worked out before anything is shown as settled.
    [[nodiscard]] bool needsReconciling() const;

    // The file the item went to the Trash as, when recorded (else the
    // planned identity).
    [[nodiscard]] FileIdentity trashedIdentity(const std::string& item,
                                               const FileIdentity& planned) const;

    // The Trash path the journal has the item at; nothing when it is not
    // recorded as in the Trash.
    [[nodiscard]] std::optional<std::string> trashPathOf(const std::string& item) const;

    friend bool operator==(const JournalState&, const JournalState&) = default;
};

// What folding needs besides the state: whether a plan line was read, and
// the items the other lines name, in order, for a journal whose plan is
// damaged.
struct JournalFolding {
    bool hasPlan = false;
    bool hasEntry = false;
    std::vector<std::string> itemsSeen;
    std::set<std::string> seen;

    void see(const std::optional<std::string>& item);
};

// Folds one line other than a plan line into the state.
void foldLine(JournalState& state, JournalFolding& folding, JournalLine line);

// What reconciliation decides for one item, and a note to go with it.
struct SettledItem {
    std::optional<ItemOutcome> outcome;
    std::optional<std::string> note;
};

// Where an item with an intent but no outcome is now. Only looks: first
// where its intents said it would go (the newest first), then in its place,
// then by identity in the Trash folders.
[[nodiscard]] SettledItem whereItIs(const JournalFileItem& item,
                                    const std::vector<std::string>& reserved,
                                    const std::vector<std::string>& trashFolders);

// Where a Put Back cut short left its item.
[[nodiscard]] SettledItem putBackSettled(const PendingPutBack& pending, const FileIdentity& moved);

// Removes the Trash records the journal reserved for the items that hold no
// file: left by a move or a Put Back cut short. `before` is the state the
// reservations are read from, `after` the one whose outcomes say where the
// items are now.
void removeOrphanRecords(const JournalState& before, const JournalState& after,
                         const std::vector<std::string>& items);

// The outcome of an item that has none of its own, for a report: unknown
// when it began to move, else not attempted (with `notAttempted`).
[[nodiscard]] RecordedOutcome assumedOutcome(const JournalState& state, const std::string& item,
                                             std::string_view notAttempted);

// The Trash folders of all the paths, without repeats.
[[nodiscard]] std::vector<std::string>
trashFoldersOf(const std::vector<std::string>& paths,
               const std::function<std::vector<std::string>(const std::string&)>& foldersFor);

} // namespace brevant
