#pragma once

#include "engine/cleanup/JournalEntry.hpp"
#include "engine/cleanup/JournalFile.hpp"
#include "engine/cleanup/JournalState.hpp"
#include "engine/cleanup/JournalTexts.hpp"
#include "engine/cleanup/TrashLocation.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/Uuid.hpp"

#include <algorithm>
#include <cerrno>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace brevant {

// Journals by start date, newest first; those started in the same second by
// path, so that the order never depends on the directory's.
struct NewestJournalFirst {
    template <class Pair> bool operator()(const Pair& left, const Pair& right) const {
        const auto& [leftDate, leftPath] = left;
        const auto& [rightDate, rightPath] = right;
        return leftDate != rightDate ? leftDate > rightDate : leftPath < rightPath;
    }
};

// A journal read back: the state of its lines and its plan.
template <class Kind> struct JournalParsed : JournalState {
    typename Kind::Plan plan;

    // The file the item went to the Trash as, when recorded (else the
    // plan's identity of it).
    [[nodiscard]] FileIdentity trashedIdentity(const typename Kind::Item& item) const {
        return JournalState::trashedIdentity(Kind::itemID(item), Kind::identity(item));
    }

    friend bool operator==(const JournalParsed&, const JournalParsed&) = default;
};

// The durable record of one run that moves files to the Trash, of any kind:
// a JSON Lines file named after the plan, in which every step that changes
// the disk is written, and forced to the storage device, before and after it
// happens. Every report is read back from it. A plan line first, an intent
// before each move and an outcome after it, a finished line last; Put Back
// adds a putBack line before it moves an item and its result after; a run
// that writes copies adds a writing line before a copy is made and a copy
// line before it takes its name.
//
// What differs between kinds is in `Kind`: the plan and its items, the
// report, the file names and the words, and what reconciliation does for an
// item that never began to move (a copy run removes its unfinished copy).
//
// Dates, also those inside the plan, are ISO 8601 text in whole seconds,
// UTC (2026-11-14T21:49:44Z); paths go through path_text, so names that are
// not UTF-8 survive.
//
// One writer at a time: the executing run, a reconciliation or one Put Back,
// each with its own handle, which holds the file's lock. The handle is not
// shared between threads.
template <class Kind> class Journal {
public:
    using Plan = typename Kind::Plan;
    using Item = typename Kind::Item;
    using Report = typename Kind::Report;
    using Entry = JournalEntry<Plan>;
    using Parsed = JournalParsed<Kind>;
    using RecordedOutcome = brevant::RecordedOutcome;
    using PendingPutBack = brevant::PendingPutBack;
    // The Trash folders in which an item trashed from a path can be.
    using TrashFoldersFor = std::function<std::vector<std::string>(const std::string& path)>;

    // The kind's prefix + the id in canonical upper-case text + ".jsonl".
    [[nodiscard]] static std::string fileName(const Uuid& planID) {
        return std::string(Kind::kFilePrefix) + planID.text() + std::string(JournalFile::kSuffix);
    }

    [[nodiscard]] static std::string pathFor(const Uuid& planID, const std::string& directory) {
        return (std::filesystem::path(directory) / fileName(planID)).string();
    }

    // Creates the directory with its parents when missing, creates the file
    // exclusively (write-only, append, mode 0600) and writes the plan entry
    // dated `now`. Fails when the file exists: a plan is journalled once.
    [[nodiscard]] static std::expected<Journal, JournalError>
    create(const Plan& plan, const std::string& directory, Date now = Date::now()) {
        auto file = JournalFile::create(pathFor(Kind::planID(plan), directory), Kind::kRecord);
        if (!file) {
            return std::unexpected(file.error());
        }
        Journal journal(std::move(*file));
        if (auto written = journal.write(Entry::ofPlan(plan, now)); !written) {
            return std::unexpected(written.error());
        }
        return journal;
    }

    // Opens an existing journal to add to it, holding its lock: refused with
    // EWOULDBLOCK while a running run or Put Back holds it. A line torn by a
    // crash is ended first.
    [[nodiscard]] static std::expected<Journal, JournalError> appendingTo(const std::string& path) {
        auto file = JournalFile::appendingTo(path, Kind::kRecord);
        if (!file) {
            return std::unexpected(file.error());
        }
        return Journal(std::move(*file));
    }

    // Encodes the entry, adds the line feed and appends the line with one
    // write call, then fsync; the entry counts as written only when this
    // returns without error.
    [[nodiscard]] std::expected<void, JournalError> write(const Entry& entry) {
        return file_.append(entry.encoded() + '\n');
    }

    // Several entries in one write call and one synchronisation.
    [[nodiscard]] std::expected<void, JournalError> write(const std::vector<Entry>& entries) {
        std::string lines;
        for (const auto& entry : entries) {
            lines += entry.encoded();
            lines += '\n';
        }
        return file_.append(std::move(lines));
    }

    [[nodiscard]] const std::string& path() const { return file_.path(); }

    // One note or outcome entry dated `now`, through appendingTo.
    [[nodiscard]] static std::expected<void, JournalError> note(const std::string& journalPath,
                                                                const std::string& itemID,
                                                                const std::string& text,
                                                                Date now = Date::now()) {
        auto journal = appendingTo(journalPath);
        if (!journal) {
            return std::unexpected(journal.error());
        }
        return journal->write(Entry::ofNote(itemID, text, now));
    }

    [[nodiscard]] static std::expected<void, JournalError> append(const std::string& journalPath,
                                                                  const ItemOutcome& outcome,
                                                                  const std::string& itemID,
                                                                  Date now = Date::now()) {
        auto journal = appendingTo(journalPath);
        if (!journal) {
            return std::unexpected(journal.error());
        }
        return journal->write(Entry::ofOutcome(itemID, outcome, now));
    }

    // The whole file folded, read once. Lines that do not decode (a torn
    // last line, a damaged one) are counted and passed over; without a
    // readable plan the items are taken from the other lines. Refused when
    // the file is a symbolic link, cannot be read, or holds no entry at all.
    [[nodiscard]] static std::expected<Parsed, JournalError> read(const std::string& journalPath) {
        auto contents = JournalFile::contents(journalPath, Kind::kRecord);
        if (!contents) {
            return std::unexpected(contents.error());
        }
        auto parsed = parseContents(*contents);
        if (!parsed) {
            return std::unexpected(JournalFile::unreadable(journalPath, Kind::kRecord));
        }
        if (parsed->planDamaged || parsed->cutBeforePlan) {
            Kind::planID(parsed->plan) = idFromName(journalPath);
        }
        if (parsed->cutBeforePlan) {
            parsed->started = modifiedDate(journalPath);
        }
        return std::move(*parsed);
    }

    [[nodiscard]] static std::optional<Parsed> parse(const std::string& journalPath) {
        auto parsed = read(journalPath);
        if (!parsed) {
            return std::nullopt;
        }
        return std::move(*parsed);
    }

    [[nodiscard]] static std::optional<Parsed> parseContents(std::string_view contents) {
        // Each line is decoded on its own, so a torn or damaged line (even one
        // cut inside a character) costs only itself.
        Parsed parsed;
        JournalFolding folding;
        while (!contents.empty()) {
            std::size_t end = contents.find('\n');
            std::string_view line = contents.substr(0, end);
            contents.remove_prefix(end == std::string_view::npos ? contents.size() : end + 1);
            if (line.empty()) {
                continue;
            }
            if (auto entry = Entry::decode(line)) {
                fold(parsed, folding, std::move(*entry));
            } else if (end != std::string_view::npos) {
                // A last line without its line feed is one a crash cut short
                // as it was written, not damage.
                ++parsed.damagedLines;
            }
        }
        if (!folding.hasEntry) {
            if (parsed.damagedLines > 0) {
                return std::nullopt;
            }
            // Not one whole line: cut short while the plan was written.
            parsed.cutBeforePlan = true;
            return parsed;
        }
        if (!folding.hasPlan) {
            parsed.planDamaged = true;
            parsed.plan = Kind::planFromLines(folding.itemsSeen, parsed);
        }
        return parsed;
    }

    // One item per planned item, in plan order; `reconciled` false; the
    // damaged part said in `damage`.
    [[nodiscard]] static std::optional<Report> report(const std::string& journalPath) {
        auto parsed = parse(journalPath);
        if (!parsed) {
            return std::nullopt;
        }
        return reportOf(*parsed, journalPath);
    }

    [[nodiscard]] static Report reportOf(const Parsed& parsed, std::string journalPath) {
        Report report = Kind::reportOf(parsed);
        report.planID = Kind::planID(parsed.plan);
        report.started = parsed.started;
        report.finished = parsed.finished;
        report.journalPath = std::move(journalPath);
        report.damage =
            parsed.cutBeforePlan
                ? std::optional(std::string(Kind::kCutBeforePlan))
                : journal_texts::damage(Kind::kRecord, parsed.planDamaged, parsed.damagedLines);
        return report;
    }

    // The reports of the journals in the directory (not its subfolders),
    // newest first. A journal that cannot be read (a symbolic link, a file
    // without a single readable line) is listed too, with no items and the
    // reason in `damage`; one whose writer is still at work is `running`.
    [[nodiscard]] static std::vector<Report> history(const std::string& directory) {
        std::vector<Report> reports;
        for (const auto& path : JournalFile::files(directory, Kind::kFilePrefix)) {
            auto parsed = read(path);
            if (!parsed) {
                reports.push_back(unreadableReport(path, parsed.error()));
                continue;
            }
            Report report = reportOf(*parsed, path);
            report.running = !parsed->finished && isRunning(path);
            reports.push_back(std::move(report));
        }
        std::ranges::sort(reports, NewestJournalFirst{}, [](const Report& report) {
            return std::tie(report.started, report.journalPath);
        });
        return reports;
    }

    // The journals that need reconciling and whose writer is not at work,
    // newest first.
    [[nodiscard]] static std::vector<std::string> unfinished(const std::string& directory) {
        std::vector<std::pair<Date, std::string>> found;
        for (const auto& path : JournalFile::files(directory, Kind::kFilePrefix)) {
            auto parsed = parse(path);
            if (parsed && parsed->needsReconciling() && !isRunning(path)) {
                found.emplace_back(parsed->started, path);
            }
        }
        std::ranges::sort(found, NewestJournalFirst{});
        std::vector<std::string> paths;
        paths.reserve(found.size());
        for (auto& [started, path] : found) {
            paths.push_back(std::move(path));
        }
        return paths;
    }

    // True while a running run or Put Back holds the journal.
    [[nodiscard]] static bool isRunning(const std::string& journalPath) {
        return JournalFile::isRunning(journalPath);
    }

    // Works out, for every planned item without an outcome, where it is now
    // and records that (first where its intent said it would go, then in
    // place, then by identity in `trashFolders`; one that never began to
    // move as the kind says), the same for the copies a run wrote, settles
    // Put Backs cut short the same way, removes the Trash records this
    // journal's moves reserved that hold no file (a move or a Put Back cut
    // short), and adds the finished entry when there is none. Never moves a
    // picture. The report is read back from the file, with `reconciled` set
    // when the run itself had been cut short.
    [[nodiscard]] std::expected<Report, JournalError>
    reconcile(const std::vector<std::string>& trashFolders, Date now = Date::now()) {
        auto parsed = read(path());
        if (!parsed) {
            return std::unexpected(parsed.error());
        }
        std::vector<Entry> entries;
        std::set<std::string> decided;
        for (const auto& item : Kind::items(parsed->plan)) {
            const std::string& id = Kind::itemID(item);
            if (decided.insert(id).second) {
                settle(
                    *parsed, {id, Kind::identity(item)}, parsed->trashedIdentity(item),
                    [&] { return Kind::unmoved(*parsed, item); }, trashFolders, now, entries);
            }
        }
        for (const auto& [item, copy] : parsed->copies) {
            if (decided.insert(copy.path).second) {
                settle(
                    *parsed, {copy.path, copy.snapshot.identity},
                    parsed->JournalState::trashedIdentity(copy.path, copy.snapshot.identity),
                    [] { return SettledItem{}; }, trashFolders, now, entries);
            }
        }
        bool cutShort = !parsed->finished;
        if (cutShort) {
            entries.push_back(Entry::ofFinished(now));
        }
        if (auto written = write(entries); !written) {
            return std::unexpected(written.error());
        }
        auto after = read(path());
        if (!after) {
            return std::unexpected(after.error());
        }
        removeOrphanRecords(*parsed, *after, {decided.begin(), decided.end()});
        Report report = reportOf(*after, path());
        report.reconciled = cutShort;
        return report;
    }

    // Reconciles every journal of `unfinished`, searching the Trash folders
    // of all its planned paths together, and answers the reports of those
    // whose run had been cut short, newest first. A journal that could not
    // be added to is given as it reads now (not reconciled); it is tried
    // again next time. A journal whose writer still holds it is never
    // touched.
    // The Trash folders are TrashLocation::candidates of each planned path.
    [[nodiscard]] static std::vector<Report> recoverInterrupted(const std::string& directory) {
        return recoverInterrupted(directory, &TrashLocation::candidates);
    }

    [[nodiscard]] static std::vector<Report>
    recoverInterrupted(const std::string& directory, const TrashFoldersFor& trashFoldersFor) {
        std::vector<Report> reports;
        for (const auto& path : unfinished(directory)) {
            auto parsed = parse(path);
            if (!parsed) {
                continue;
            }
            auto journal = appendingTo(path);
            if (!journal && journal.error().code == EWOULDBLOCK) {
                // Its writer came back to it meanwhile: it is not ours to settle.
                continue;
            }
            if (journal) {
                auto reconciled =
                    journal->reconcile(trashFoldersOf(plannedPaths(parsed->plan), trashFoldersFor));
                if (reconciled) {
                    if (reconciled->reconciled) {
                        reports.push_back(std::move(*reconciled));
                    }
                    continue;
                }
            }
            // Not reconciled this time; shown as it stands and tried again later.
            if (!parsed->finished) {
                reports.push_back(reportOf(*parsed, path));
            }
        }
        return reports;
    }

    // The paths of the plan's items, in plan order.
    [[nodiscard]] static std::vector<std::string> plannedPaths(const Plan& plan) {
        std::vector<std::string> paths;
        for (const auto& item : Kind::items(plan)) {
            paths.push_back(Kind::itemID(item));
        }
        return paths;
    }

private:
    // The id a journal's name gives, for one whose plan cannot be read.
    static Uuid idFromName(const std::string& path) {
        return Uuid::parse(JournalFile::idText(path, Kind::kFilePrefix)).value_or(Uuid{});
    }

    // When the file was last written, for a journal that holds no date.
    static Date modifiedDate(const std::string& path) {
        auto status = platform::statusOfPath(path);
        return status ? Date::fromUnixSeconds(static_cast<double>(status->modifiedSeconds))
                      : Date{};
    }

    explicit Journal(JournalFile file)
        : file_(std::move(file)) {}

    static void fold(Parsed& parsed, JournalFolding& folding, Entry entry) {
        bool isPlan = entry.kind == JournalEntryKind::plan && entry.plan;
        Date at = entry.at;
        if (isPlan) {
            parsed.plan = std::move(*entry.plan);
        }
        foldLine(parsed, folding, std::move(static_cast<JournalLine&>(entry)));
        if (isPlan) {
            parsed.started = at;
            folding.hasPlan = true;
        }
    }

    // One file without an outcome: a Put Back cut short, a move cut short,
    // or (as `unmoved` says) one that never began to move.
    static void settle(const Parsed& parsed, const JournalFileItem& item,
                       const FileIdentity& trashed, const std::function<SettledItem()>& unmoved,
                       const std::vector<std::string>& trashFolders, Date now,
                       std::vector<Entry>& entries) {
        SettledItem settled;
        if (auto pending = parsed.putBacks.find(item.path); pending != parsed.putBacks.end()) {
            settled = putBackSettled(pending->second, trashed);
        } else if (parsed.outcomes.contains(item.path)) {
            return;
        } else if (parsed.intents.contains(item.path)) {
            auto reserved = parsed.reserved.find(item.path);
            settled = whereItIs(item,
                                reserved != parsed.reserved.end() ? reserved->second
                                                                  : std::vector<std::string>{},
                                trashFolders);
        } else {
            settled = unmoved();
        }
        if (settled.outcome) {
            entries.push_back(Entry::ofOutcome(item.path, std::move(*settled.outcome), now));
        }
        if (settled.note) {
            entries.push_back(Entry::ofNote(item.path, std::move(*settled.note), now));
        }
    }

    // A journal that gives no report is still listed, so that pictures it
    // moved are never hidden: its id from its name, dated by the file.
    static Report unreadableReport(const std::string& path, const JournalError& error) {
        Report report;
        report.planID = idFromName(path);
        report.started = modifiedDate(path);
        report.journalPath = path;
        report.damage = error.description;
        return report;
    }

    JournalFile file_;
};

} // namespace brevant
