#pragma once

#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/CleanupReport.hpp"
#include "engine/cleanup/ItemOutcome.hpp"
#include "engine/platform/AppendOnlyFile.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/RawValue.hpp"
#include "engine/support/Uuid.hpp"

#include <expected>
#include <functional>
#include <iosfwd>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Why the journal file could not be made, opened, written or read.
struct JournalError {
    // The errno value behind it (EINVAL for a journal without a plan).
    int code = 0;
    // A sentence for display.
    std::string description;

    friend bool operator==(const JournalError&, const JournalError&) = default;
};

// The durable record of one folder cleanup: a JSON Lines file named after
// the plan, in which every step that changes the disk is written, and forced
// to the storage device, before and after it happens. Every report is read
// back from it.
//
// On disk: one JSON object per line, no pretty printing, keys "kind", "plan",
// "itemID", "outcome", "text", "at" in that order, absent ones left out.
// Dates, also those inside the plan, are ISO 8601 text in whole seconds, UTC
// (2026-11-14T21:49:44Z); a snapshot keeps its integer seconds and
// nanoseconds. Paths are stored through path_text, so names that are not
// UTF-8 survive.
//
// One writer at a time: the executing run, a reconciliation or one Put Back,
// each with its own handle. The handle is not shared between threads.
class CleanupJournal {
public:
    struct Entry {
        enum class Kind {
            plan,
            intent,
            outcome,
            finished,
            note,
            // A Put Back about to move the item out of the Trash.
            putBack,
        };

        Kind kind = Kind::note;
        std::optional<CleanupPlan> plan;
        // The planned removal's path.
        std::optional<std::string> itemID;
        std::optional<ItemOutcome> outcome;
        std::optional<std::string> text;
        // intent: where in the Trash the item is about to go, written before
        // its Trash record is, so that a record left by a crash is known as
        // ours. putBack: where the item lies in the Trash.
        std::optional<std::string> trashPath;
        // putBack: where the item is about to be put.
        std::optional<std::string> destination;
        Date at;

        [[nodiscard]] static Entry ofPlan(CleanupPlan plan, Date at);
        [[nodiscard]] static Entry ofIntent(std::string itemID, Date at,
                                            std::optional<std::string> trashPath = {});
        [[nodiscard]] static Entry ofPutBack(std::string itemID, std::string trashPath,
                                             std::string destination, Date at);
        [[nodiscard]] static Entry ofOutcome(std::string itemID, ItemOutcome outcome, Date at);
        [[nodiscard]] static Entry ofNote(std::string itemID, std::string text, Date at);
        [[nodiscard]] static Entry ofFinished(Date at);

        // The line's text, without its line feed.
        [[nodiscard]] std::string encoded() const;
        [[nodiscard]] static std::optional<Entry> decode(std::string_view line);

        friend bool operator==(const Entry&, const Entry&) = default;
    };

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

    // A journal read back. Keys are item ids (the removals' paths).
    struct Parsed {
        // When the plan line cannot be read, the plan holds only the items
        // the other lines name, by path, and the id from the file's name.
        CleanupPlan plan;
        bool planDamaged = false;
        // Not one whole line: the run was cut short while writing its plan,
        // before anything could move.
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
        std::optional<Date> finished;
        // Lines that do not decode (a line torn by a crash among them).
        int damagedLines = 0;

        // The run was cut short, an item that began to move has no outcome
        // (its line is damaged), or a Put Back was cut short: where things
        // are must be worked out before anything is shown as settled.
        [[nodiscard]] bool needsReconciling() const;

        // The file the item went to the Trash as, when recorded (else the
        // plan's snapshot identity).
        [[nodiscard]] FileIdentity trashedIdentity(const PlannedRemoval& removal) const;

        friend bool operator==(const Parsed&, const Parsed&) = default;
    };

    // The Trash folders in which an item trashed from a path can be.
    using TrashFoldersFor = std::function<std::vector<std::string>(const std::string& path)>;

    // "cleanup-" + the id in canonical upper-case text + ".jsonl".
    [[nodiscard]] static std::string fileName(const Uuid& planID);
    [[nodiscard]] static std::string pathFor(const Uuid& planID, const std::string& directory);

    // Creates the directory with its parents when missing, creates the file
    // exclusively (write-only, append, mode 0600) and writes the plan entry
    // dated `now`. Fails when the file exists: a plan is journalled once.
    [[nodiscard]] static std::expected<CleanupJournal, JournalError>
    create(const CleanupPlan& plan, const std::string& directory, Date now = Date::now());

    // Opens an existing journal to add to it, holding its lock: refused with
    // EWOULDBLOCK while a running cleanup or Put Back holds it. When its last
    // byte is not a line feed (a line torn by a crash) one is written first,
    // so the torn piece stays a line of its own and the next entry starts
    // cleanly.
    [[nodiscard]] static std::expected<CleanupJournal, JournalError>
    appendingTo(const std::string& path);

    // Encodes the entry, adds the line feed and appends the line with one
    // write call, then fsync; the entry counts as written only when this
    // returns without error.
    [[nodiscard]] std::expected<void, JournalError> write(const Entry& entry);
    // Several entries in one write call and one synchronisation.
    [[nodiscard]] std::expected<void, JournalError> write(const std::vector<Entry>& entries);

    // Works out, for every planned item without an outcome, where it is now
    // and records that (first where its intent said it would go, then in
    // place, then by identity in `trashFolders`), settles Put Backs cut
    // short the same way, removes the Trash records this journal's moves
    // reserved that hold no file (a move or a Put Back cut short), and adds
    // the finished entry when there is none. Never moves a picture. The report
    // is read back from the file, with `reconciled` set when the run itself
    // had been cut short.
    [[nodiscard]] std::expected<CleanupReport, JournalError>
    reconcile(const std::vector<std::string>& trashFolders, Date now = Date::now());

    [[nodiscard]] const std::string& path() const { return path_; }

    // One note or outcome entry dated `now`, through appendingTo.
    [[nodiscard]] static std::expected<void, JournalError> note(const std::string& journalPath,
                                                                const std::string& itemID,
                                                                const std::string& text,
                                                                Date now = Date::now());
    [[nodiscard]] static std::expected<void, JournalError> append(const std::string& journalPath,
                                                                  const ItemOutcome& outcome,
                                                                  const std::string& itemID,
                                                                  Date now = Date::now());

    // The whole file folded, read once. Lines that do not decode (a torn
    // last line, a damaged one) are counted and passed over; without a
    // readable plan the items are taken from the other lines. Refused when
    // the file is a symbolic link, cannot be read, or holds no entry at all.
    [[nodiscard]] static std::expected<Parsed, JournalError> read(const std::string& journalPath);
    [[nodiscard]] static std::optional<Parsed> parse(const std::string& journalPath);
    [[nodiscard]] static std::optional<Parsed> parseContents(std::string_view contents);

    // One item per planned removal, in plan order; `reconciled` false; the
    // damaged part said in `damage`.
    [[nodiscard]] static std::optional<CleanupReport> report(const std::string& journalPath);
    [[nodiscard]] static CleanupReport reportOf(const Parsed& parsed, std::string journalPath);

    // The reports of the journals in the directory (not its subfolders),
    // newest first. A journal that cannot be read (a symbolic link, a file
    // without a single readable line) is listed too, with no items and the
    // reason in `damage`; one whose writer is still at work is `running`.
    [[nodiscard]] static std::vector<CleanupReport> history(const std::string& directory);

    // The journals that need reconciling and whose writer is not at work,
    // newest first.
    [[nodiscard]] static std::vector<std::string> unfinished(const std::string& directory);

    // True while a running cleanup or Put Back holds the journal.
    [[nodiscard]] static bool isRunning(const std::string& journalPath);

    // Reconciles every journal of `unfinished`, searching the Trash folders
    // of all its planned paths together, and answers the reports of those
    // whose run had been cut short, newest first. A journal that could not
    // be added to is given as it reads now (not reconciled); it is tried
    // again next time. A journal whose writer still holds it is never
    // touched.
    // The Trash folders are TrashLocation::candidates of each planned path.
    [[nodiscard]] static std::vector<CleanupReport>
    recoverInterrupted(const std::string& directory);
    [[nodiscard]] static std::vector<CleanupReport>
    recoverInterrupted(const std::string& directory, const TrashFoldersFor& trashFoldersFor);

private:
    CleanupJournal(std::string path, platform::AppendOnlyFile file)
        : path_(std::move(path))
        , file_(std::move(file)) {}

    [[nodiscard]] std::expected<void, JournalError> writeLines(std::string lines);

    std::string path_;
    platform::AppendOnlyFile file_;
};

template <> struct EnumCases<CleanupJournal::Entry::Kind> {
    using Kind = CleanupJournal::Entry::Kind;
    static constexpr std::array kAll{Kind::plan,     Kind::intent, Kind::outcome,
                                     Kind::finished, Kind::note,   Kind::putBack};
};

[[nodiscard]] std::string_view rawValue(CleanupJournal::Entry::Kind kind);
void PrintTo(CleanupJournal::Entry::Kind kind, std::ostream* os);

void to_json(nlohmann::ordered_json& j, const CleanupJournal::Entry& value);
void from_json(const nlohmann::ordered_json& j, CleanupJournal::Entry& value);

} // namespace brevant
