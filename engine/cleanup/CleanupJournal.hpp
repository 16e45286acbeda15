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
        };

        Kind kind = Kind::note;
        std::optional<CleanupPlan> plan;
        // The planned removal's path.
        std::optional<std::string> itemID;
        std::optional<ItemOutcome> outcome;
        std::optional<std::string> text;
        Date at;

        [[nodiscard]] static Entry ofPlan(CleanupPlan plan, Date at);
        [[nodiscard]] static Entry ofIntent(std::string itemID, Date at);
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

    // A journal read back. Keys are item ids (the removals' paths).
    struct Parsed {
        CleanupPlan plan;
        // The date of the plan entry.
        Date started;
        std::set<std::string> intents;
        // The latest outcome of each item: a later one replaces an earlier,
        // which is how Put Back turns movedToTrash into restored.
        std::map<std::string, RecordedOutcome> outcomes;
        std::map<std::string, std::vector<std::string>> notes;
        std::optional<Date> finished;

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

    // Opens an existing journal to add to it. When its last byte is not a line
    // feed (a line torn by a crash) one is written first, so the torn piece
    // stays a line of its own and the next entry starts cleanly.
    [[nodiscard]] static std::expected<CleanupJournal, JournalError>
    appendingTo(const std::string& path);

    // Encodes the entry, adds the line feed and appends the line with one
    // write call, then fsync; the entry counts as written only when this
    // returns without error.
    [[nodiscard]] std::expected<void, JournalError> write(const Entry& entry);

    // Works out, for every planned item without an outcome, where it is now
    // and records that; then the finished entry when there is none. Looks for
    // moved items by identity in `trashFolders`. Never moves anything. The
    // report is read back from the file, with `reconciled` set.
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

    // The whole file folded; nothing when it cannot be read or has no plan.
    // Lines that do not decode (a torn last line) are passed over.
    [[nodiscard]] static std::optional<Parsed> parse(const std::string& journalPath);
    [[nodiscard]] static std::optional<Parsed> parseContents(std::string_view contents);

    // One item per planned removal, in plan order; `reconciled` false.
    [[nodiscard]] static std::optional<CleanupReport> report(const std::string& journalPath);
    [[nodiscard]] static CleanupReport reportOf(const Parsed& parsed, std::string journalPath);

    // The reports of the journals in the directory (not its subfolders),
    // newest first; files that give no report are left out.
    [[nodiscard]] static std::vector<CleanupReport> history(const std::string& directory);

    // The paths of the readable journals without a finished entry, newest
    // first.
    [[nodiscard]] static std::vector<std::string> unfinished(const std::string& directory);

    // Reconciles every unfinished journal in the directory, searching the
    // Trash folders of all its planned paths together, and answers their
    // reports, newest first. A journal that could not be added to is given
    // as it reads now (not reconciled); it is tried again next time.
    // The Trash folders are TrashLocation::candidates of each planned path.
    [[nodiscard]] static std::vector<CleanupReport>
    recoverInterrupted(const std::string& directory);
    [[nodiscard]] static std::vector<CleanupReport>
    recoverInterrupted(const std::string& directory, const TrashFoldersFor& trashFoldersFor);

private:
    CleanupJournal(std::string path, platform::AppendOnlyFile file)
        : path_(std::move(path))
        , file_(std::move(file)) {}

    [[nodiscard]] std::expected<void, JournalError> writeLine(std::string line);

    std::string path_;
    platform::AppendOnlyFile file_;
};

template <> struct EnumCases<CleanupJournal::Entry::Kind> {
    using Kind = CleanupJournal::Entry::Kind;
    static constexpr std::array kAll{Kind::plan, Kind::intent, Kind::outcome, Kind::finished,
                                     Kind::note};
};

[[nodiscard]] std::string_view rawValue(CleanupJournal::Entry::Kind kind);
void PrintTo(CleanupJournal::Entry::Kind kind, std::ostream* os);

void to_json(nlohmann::ordered_json& j, const CleanupJournal::Entry& value);
void from_json(const nlohmann::ordered_json& j, CleanupJournal::Entry& value);

} // namespace brevant
