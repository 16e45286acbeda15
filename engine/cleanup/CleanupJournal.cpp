#include "CleanupJournal.hpp"

#include "engine/cleanup/JournalTexts.hpp"
#include "engine/cleanup/TrashLocation.hpp"
#include "engine/platform/FileLock.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/FolderListing.hpp"
#include "engine/platform/FreedesktopTrash.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/AtomicFile.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <ostream>
#include <tuple>

namespace brevant {

namespace {

using Entry = CleanupJournal::Entry;

constexpr std::string_view kFilePrefix = "cleanup-";
constexpr std::string_view kFileSuffix = ".jsonl";
constexpr mode_t kPermissions = 0600;
// Stands for "not a regular file" among the errno values readError takes.
constexpr int kNotAFile = -1;

std::string nameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

JournalError openError(const std::string& path, int code) {
    if (code == EWOULDBLOCK) {
        return {code, journal_texts::inUse(nameOf(path))};
    }
    return {code, journal_texts::cannotOpen(nameOf(path), platform::errorText(code))};
}

JournalError writeError(const std::string& path, int code) {
    return {code, journal_texts::cannotWrite(nameOf(path), platform::errorText(code))};
}

// A journal is only ever created once, for a plan not yet run, so a file of
// its name is one explanation; any other is said as it is.
JournalError createError(const std::string& directory, const std::string& name, int code) {
    if (code == EEXIST) {
        return {code, journal_texts::alreadyExists(name, directory)};
    }
    return {code, journal_texts::cannotCreate(name, directory, platform::errorText(code))};
}

// The id a journal's name gives, for one whose plan cannot be read.
Uuid idFromName(const std::string& path) {
    std::string name = nameOf(path);
    if (!name.starts_with(kFilePrefix) || !name.ends_with(kFileSuffix) ||
        name.size() < kFilePrefix.size() + kFileSuffix.size()) {
        return Uuid{};
    }
    std::string_view id = std::string_view(name).substr(kFilePrefix.size());
    id.remove_suffix(kFileSuffix.size());
    return Uuid::parse(id).value_or(Uuid{});
}

// When the file was last written, for a journal that holds no date.
Date modifiedDate(const std::string& path) {
    auto status = platform::statusOfPath(path);
    return status ? Date::fromUnixSeconds(static_cast<double>(status->modifiedSeconds)) : Date{};
}

JournalError readError(const std::string& path, int code) {
    if (code == ELOOP) {
        return {code, journal_texts::isLink(path)};
    }
    if (code == EINVAL) {
        return {code, journal_texts::unreadable(nameOf(path))};
    }
    if (code == kNotAFile) {
        return {EINVAL, journal_texts::notAFile(nameOf(path))};
    }
    return {code, journal_texts::cannotRead(nameOf(path), platform::errorText(code))};
}

// By start date, newest first; journals started in the same second by
// path, so that the order never depends on the directory's.
constexpr auto kNewestFirst = [](const auto& left, const auto& right) {
    const auto& [leftDate, leftPath] = left;
    const auto& [rightDate, rightPath] = right;
    return leftDate != rightDate ? leftDate > rightDate : leftPath < rightPath;
};

// The journal files directly in the directory, by name.
std::vector<std::string> journalFiles(const std::string& directory) {
    std::vector<std::string> paths;
    for (const auto& name :
         platform::folderEntries(directory).value_or(std::vector<std::string>{})) {
        if (name.starts_with(kFilePrefix) && name.ends_with(kFileSuffix)) {
            paths.push_back((std::filesystem::path(directory) / name).string());
        }
    }
    return paths;
}

// What folding needs besides the result: whether a plan line was read, and
// the items the other lines name, in order, for a journal whose plan is
// damaged.
struct Folding {
    CleanupJournal::Parsed parsed;
    bool hasPlan = false;
    bool hasEntry = false;
    std::vector<std::string> itemsSeen;
    std::set<std::string> seen;

    void see(const std::optional<std::string>& item) {
        if (item && seen.insert(*item).second) {
            itemsSeen.push_back(*item);
        }
    }
};

void fold(Folding& folding, Entry entry) {
    auto& parsed = folding.parsed;
    if (!folding.hasEntry) {
        parsed.started = entry.at;
        folding.hasEntry = true;
    }
    folding.see(entry.itemID);
    switch (entry.kind) {
    case Entry::Kind::plan:
        if (entry.plan) {
            parsed.plan = std::move(*entry.plan);
            parsed.started = entry.at;
            folding.hasPlan = true;
        }
        return;
    case Entry::Kind::intent:
        if (entry.itemID) {
            if (entry.trashPath) {
                parsed.reserved[*entry.itemID].push_back(std::move(*entry.trashPath));
            }
            parsed.intents.insert(std::move(*entry.itemID));
        }
        return;
    case Entry::Kind::outcome:
        if (entry.itemID && entry.outcome) {
            parsed.putBacks.erase(*entry.itemID);
            parsed.outcomes.insert_or_assign(
                std::move(*entry.itemID),
                CleanupJournal::RecordedOutcome{std::move(*entry.outcome), entry.at});
        }
        return;
    case Entry::Kind::note:
        if (entry.itemID && entry.text) {
            // A Put Back that did not happen ends with its note.
            parsed.putBacks.erase(*entry.itemID);
            parsed.notes[std::move(*entry.itemID)].push_back(std::move(*entry.text));
        }
        return;
    case Entry::Kind::finished:
        parsed.finished = entry.at;
        return;
    case Entry::Kind::putBack:
        if (entry.itemID && entry.trashPath && entry.destination) {
            parsed.putBacks.insert_or_assign(
                std::move(*entry.itemID),
                CleanupJournal::PendingPutBack{std::move(*entry.trashPath),
                                               std::move(*entry.destination)});
        }
        return;
    }
}

// Without a readable plan line the items are those the other lines name; a
// moved one keeps the identity its outcome recorded, so it can be put back.
CleanupPlan planFromLines(const Folding& folding) {
    CleanupPlan plan;
    for (const auto& item : folding.itemsSeen) {
        PlannedRemoval removal;
        removal.path = item;
        removal.snapshot.identity = folding.parsed.trashedIdentity(removal);
        plan.removals.push_back(std::move(removal));
    }
    return plan;
}

ItemReport itemReport(const CleanupJournal::Parsed& parsed, const PlannedRemoval& removal) {
    ItemReport item;
    item.removal = removal;
    if (auto notes = parsed.notes.find(removal.path); notes != parsed.notes.end()) {
        item.notes = notes->second;
    }
    if (auto recorded = parsed.outcomes.find(removal.path); recorded != parsed.outcomes.end()) {
        item.outcome = recorded->second.outcome;
        item.at = recorded->second.at;
        return item;
    }
    // No outcome of its own: dated when the journal last said where things
    // stood.
    item.at = parsed.finished.value_or(parsed.started);
    item.outcome = parsed.intents.contains(removal.path)
                       ? ItemOutcome::unknown(std::string(journal_texts::kStoppedWhileMoving))
                       : ItemOutcome::skipped(std::string(journal_texts::kNotAttempted));
    return item;
}

// A file in the Trash at `trashPath`, as a regular file.
std::optional<FileSnapshot> trashedFile(const std::string& trashPath) {
    auto found = FileSnapshot::read(trashPath);
    if (!found || !found->isRegularFile || found->isSymbolicLink) {
        return std::nullopt;
    }
    return found;
}

// What reconciliation decides for one item, and a note to go with it.
struct Settled {
    std::optional<ItemOutcome> outcome;
    std::optional<std::string> note;
};

// Where an item with an intent but no outcome is now. Only looks: first
// where its intents said it would go (the newest first), then in its place,
// then by identity in the Trash folders.
Settled whereItIs(const PlannedRemoval& removal, const std::vector<std::string>& reserved,
                  const std::vector<std::string>& trashFolders) {
    const FileIdentity& planned = removal.snapshot.identity;
    for (auto slot = reserved.rbegin(); slot != reserved.rend(); ++slot) {
        auto found = trashedFile(*slot);
        if (!found) {
            continue;
        }
        bool same = found->identity == planned;
        if (same || platform::FreedesktopTrash::recordedPath(*slot) == removal.path) {
            Settled settled{.outcome = ItemOutcome::movedToTrash(*slot, found->identity)};
            if (!same) {
                settled.note = std::string(journal_texts::kChangedAsItMoved);
            }
            return settled;
        }
    }
    auto inPlace = FileSnapshot::read(removal.path);
    if (inPlace && inPlace->identity == planned) {
        return {.outcome = ItemOutcome::skipped(std::string(journal_texts::kStillInPlace))};
    }
    for (const auto& folder : trashFolders) {
        if (auto found = TrashLocation::find(folder, planned)) {
            return {.outcome = ItemOutcome::movedToTrash(std::move(found), planned)};
        }
    }
    return {.outcome = ItemOutcome::unknown(std::string(journal_texts::kNotFoundInTrash))};
}

// Where a Put Back cut short left its picture.
Settled putBackSettled(const CleanupJournal::PendingPutBack& pending, const FileIdentity& moved) {
    auto atDestination = FileSnapshot::read(pending.destination);
    if (atDestination && atDestination->identity == moved) {
        return {.outcome = ItemOutcome::restored(pending.destination)};
    }
    auto inTrash = trashedFile(pending.trashPath);
    if (inTrash && inTrash->identity == moved) {
        return {.note = std::string(journal_texts::kPutBackStopped)};
    }
    return {.note = journal_texts::putBackLost(pending.destination)};
}

// A Trash record this journal reserved for the item whose file is not
// there: left by a move or a Put Back cut short.
bool isOrphanRecord(const std::string& trashPath, const std::string& item) {
    if (FileSnapshot::read(trashPath)) {
        return false;
    }
    return platform::FreedesktopTrash::recordedPath(trashPath) == item;
}

// The places in the Trash the journal reserved or recorded for the item.
std::vector<std::string> trashPathsOf(const CleanupJournal::Parsed& parsed,
                                      const std::string& item) {
    std::vector<std::string> paths;
    if (auto reserved = parsed.reserved.find(item); reserved != parsed.reserved.end()) {
        paths = reserved->second;
    }
    if (auto pending = parsed.putBacks.find(item); pending != parsed.putBacks.end()) {
        paths.push_back(pending->second.trashPath);
    }
    return paths;
}

void removeOrphanRecords(const CleanupJournal::Parsed& before,
                         const CleanupJournal::Parsed& after) {
    for (const auto& removal : after.plan.removals) {
        std::optional<std::string> inTrash;
        if (auto recorded = after.outcomes.find(removal.path); recorded != after.outcomes.end()) {
            inTrash = recorded->second.outcome.trashPath;
        }
        for (const auto& trashPath : trashPathsOf(before, removal.path)) {
            if (trashPath != inTrash && isOrphanRecord(trashPath, removal.path)) {
                (void)platform::FreedesktopTrash::removeTrashInfo(trashPath);
            }
        }
    }
}

std::vector<std::string> trashFoldersOf(const CleanupPlan& plan,
                                        const CleanupJournal::TrashFoldersFor& trashFoldersFor) {
    std::vector<std::string> folders;
    for (const auto& removal : plan.removals) {
        for (auto& folder : trashFoldersFor(removal.path)) {
            if (std::ranges::find(folders, folder) == folders.end()) {
                folders.push_back(std::move(folder));
            }
        }
    }
    return folders;
}

} // namespace

Entry Entry::ofPlan(CleanupPlan plan, Date at) {
    return {.kind = Kind::plan, .plan = std::move(plan), .at = at};
}

Entry Entry::ofIntent(std::string itemID, Date at, std::optional<std::string> trashPath) {
    return {.kind = Kind::intent,
            .itemID = std::move(itemID),
            .trashPath = std::move(trashPath),
            .at = at};
}

Entry Entry::ofPutBack(std::string itemID, std::string trashPath, std::string destination,
                       Date at) {
    return {.kind = Kind::putBack,
            .itemID = std::move(itemID),
            .trashPath = std::move(trashPath),
            .destination = std::move(destination),
            .at = at};
}

Entry Entry::ofOutcome(std::string itemID, ItemOutcome outcome, Date at) {
    return {.kind = Kind::outcome,
            .itemID = std::move(itemID),
            .outcome = std::move(outcome),
            .at = at};
}

Entry Entry::ofNote(std::string itemID, std::string text, Date at) {
    return {.kind = Kind::note, .itemID = std::move(itemID), .text = std::move(text), .at = at};
}

Entry Entry::ofFinished(Date at) {
    return {.kind = Kind::finished, .at = at};
}

std::string Entry::encoded() const {
    json::Json j = *this;
    // Every text went through path_text and is valid UTF-8; replacing is
    // only a guard so that encoding can never throw.
    return j.dump(-1, ' ', false, json::Json::error_handler_t::replace);
}

std::optional<Entry> Entry::decode(std::string_view line) {
    try {
        return json::parse(line).get<Entry>();
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::string_view rawValue(CleanupJournal::Entry::Kind kind) {
    switch (kind) {
    case Entry::Kind::plan:
        return "plan";
    case Entry::Kind::intent:
        return "intent";
    case Entry::Kind::outcome:
        return "outcome";
    case Entry::Kind::finished:
        return "finished";
    case Entry::Kind::note:
        return "note";
    case Entry::Kind::putBack:
        return "putBack";
    }
    return "note";
}

void PrintTo(CleanupJournal::Entry::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void to_json(nlohmann::ordered_json& j, const CleanupJournal::Entry& value) {
    j = json::Json::object();
    j["kind"] = json::enumValue(value.kind);
    json::putOptional(j, "plan", value.plan);
    json::putOptionalText(j, "itemID", value.itemID);
    json::putOptional(j, "outcome", value.outcome);
    json::putOptionalText(j, "text", value.text);
    json::putOptionalText(j, "trashPath", value.trashPath);
    json::putOptionalText(j, "destination", value.destination);
    j["at"] = json::isoDate(value.at);
}

void from_json(const nlohmann::ordered_json& j, CleanupJournal::Entry& value) {
    value.kind = json::getEnum<Entry::Kind>(j, "kind");
    value.plan = json::getOptional<CleanupPlan>(j, "plan");
    value.itemID = json::getOptionalText(j, "itemID");
    value.outcome = json::getOptional<ItemOutcome>(j, "outcome");
    value.text = json::getOptionalText(j, "text");
    value.trashPath = json::getOptionalText(j, "trashPath");
    value.destination = json::getOptionalText(j, "destination");
    value.at = json::getIsoDate(j, "at");
}

bool CleanupJournal::Parsed::needsReconciling() const {
    if (cutBeforePlan) {
        return false;
    }
    if (!finished || !putBacks.empty()) {
        return true;
    }
    return std::ranges::any_of(
        intents, [this](const std::string& item) { return !outcomes.contains(item); });
}

FileIdentity CleanupJournal::Parsed::trashedIdentity(const PlannedRemoval& removal) const {
    if (auto recorded = outcomes.find(removal.path); recorded != outcomes.end()) {
        if (const auto& identity = recorded->second.outcome.identity) {
            return *identity;
        }
    }
    return removal.snapshot.identity;
}

std::string CleanupJournal::fileName(const Uuid& planID) {
    return std::string(kFilePrefix) + planID.text() + std::string(kFileSuffix);
}

std::string CleanupJournal::pathFor(const Uuid& planID, const std::string& directory) {
    return (std::filesystem::path(directory) / fileName(planID)).string();
}

std::expected<CleanupJournal, JournalError>
CleanupJournal::create(const CleanupPlan& plan, const std::string& directory, Date now) {
    std::string name = fileName(plan.id);
    std::error_code folderError;
    std::filesystem::create_directories(directory, folderError);
    std::string path = pathFor(plan.id, directory);
    auto file = platform::AppendOnlyFile::create(path, kPermissions);
    if (!file) {
        // A folder that could not be made is the better explanation.
        int code = folderError ? folderError.value() : file.error();
        return std::unexpected(createError(directory, name, code));
    }
    // Held until the run ends, so that nobody takes it for one cut short;
    // only a reader's brief look can hold it now.
    if (auto locked = file->lock(true); !locked) {
        return std::unexpected(writeError(path, locked.error()));
    }
    CleanupJournal journal(std::move(path), std::move(*file));
    if (auto written = journal.write(Entry::ofPlan(plan, now)); !written) {
        return std::unexpected(written.error());
    }
    return journal;
}

std::expected<CleanupJournal, JournalError> CleanupJournal::appendingTo(const std::string& path) {
    auto file = platform::AppendOnlyFile::open(path);
    if (!file) {
        return std::unexpected(openError(path, file.error()));
    }
    if (auto locked = file->lock(false); !locked) {
        return std::unexpected(openError(path, locked.error()));
    }
    auto torn = file->endsMidLine();
    if (!torn) {
        return std::unexpected(openError(path, torn.error()));
    }
    CleanupJournal journal(path, std::move(*file));
    if (*torn) {
        // Ends the torn line a crash left, so that it stays apart.
        if (auto ended = journal.file_.append("\n"); !ended) {
            return std::unexpected(writeError(path, ended.error()));
        }
    }
    return journal;
}

std::expected<void, JournalError> CleanupJournal::write(const Entry& entry) {
    return writeLines(entry.encoded() + '\n');
}

std::expected<void, JournalError> CleanupJournal::write(const std::vector<Entry>& entries) {
    if (entries.empty()) {
        return {};
    }
    std::string lines;
    for (const auto& entry : entries) {
        lines += entry.encoded();
        lines += '\n';
    }
    return writeLines(std::move(lines));
}

std::expected<void, JournalError> CleanupJournal::writeLines(std::string lines) {
    if (file_.lastAppendCutShort()) {
        // Step past the piece of a line that write left, in the same call.
        lines.insert(lines.begin(), '\n');
    }
    if (auto appended = file_.append(lines); !appended) {
        return std::unexpected(writeError(path_, appended.error()));
    }
    return {};
}

std::expected<void, JournalError> CleanupJournal::note(const std::string& journalPath,
                                                       const std::string& itemID,
                                                       const std::string& text, Date now) {
    auto journal = appendingTo(journalPath);
    if (!journal) {
        return std::unexpected(journal.error());
    }
    return journal->write(Entry::ofNote(itemID, text, now));
}

std::expected<void, JournalError> CleanupJournal::append(const std::string& journalPath,
                                                         const ItemOutcome& outcome,
                                                         const std::string& itemID, Date now) {
    auto journal = appendingTo(journalPath);
    if (!journal) {
        return std::unexpected(journal.error());
    }
    return journal->write(Entry::ofOutcome(itemID, outcome, now));
}

std::expected<CleanupJournal::Parsed, JournalError>
CleanupJournal::read(const std::string& journalPath) {
    auto bytes = AtomicFile::read(journalPath);
    if (!bytes) {
        auto status = FileSnapshot::read(journalPath);
        int code = !status                  ? ENOENT
                   : status->isSymbolicLink ? ELOOP
                   : status->isRegularFile  ? EACCES
                                            : kNotAFile;
        return std::unexpected(readError(journalPath, code));
    }
    auto parsed = parseContents(
        std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
    if (!parsed) {
        return std::unexpected(readError(journalPath, EINVAL));
    }
    if (parsed->planDamaged || parsed->cutBeforePlan) {
        parsed->plan.id = idFromName(journalPath);
    }
    if (parsed->cutBeforePlan) {
        parsed->started = modifiedDate(journalPath);
    }
    return std::move(*parsed);
}

std::optional<CleanupJournal::Parsed> CleanupJournal::parse(const std::string& journalPath) {
    auto parsed = read(journalPath);
    if (!parsed) {
        return std::nullopt;
    }
    return std::move(*parsed);
}

std::optional<CleanupJournal::Parsed> CleanupJournal::parseContents(std::string_view contents) {
    // Each line is decoded on its own, so a torn or damaged line (even one
    // cut inside a character) costs only itself.
    Folding folding;
    while (!contents.empty()) {
        std::size_t end = contents.find('\n');
        std::string_view line = contents.substr(0, end);
        contents.remove_prefix(end == std::string_view::npos ? contents.size() : end + 1);
        if (line.empty()) {
            continue;
        }
        if (auto entry = Entry::decode(line)) {
            fold(folding, std::move(*entry));
        } else if (end != std::string_view::npos) {
            // A last line without its line feed is one a crash cut short
            // as it was written, not damage.
            ++folding.parsed.damagedLines;
        }
    }
    if (!folding.hasEntry) {
        if (folding.parsed.damagedLines > 0) {
            return std::nullopt;
        }
        folding.parsed.cutBeforePlan = true;
        return std::move(folding.parsed);
    }
    if (!folding.hasPlan) {
        folding.parsed.planDamaged = true;
        folding.parsed.plan = planFromLines(folding);
    }
    return std::move(folding.parsed);
}

CleanupReport CleanupJournal::reportOf(const Parsed& parsed, std::string journalPath) {
    CleanupReport report;
    report.planID = parsed.plan.id;
    report.started = parsed.started;
    report.finished = parsed.finished;
    report.journalPath = std::move(journalPath);
    report.damage = parsed.cutBeforePlan
                        ? std::optional(std::string(journal_texts::kCutBeforePlan))
                        : journal_texts::damage(parsed.planDamaged, parsed.damagedLines);
    report.items.reserve(parsed.plan.removals.size());
    for (const auto& removal : parsed.plan.removals) {
        report.items.push_back(itemReport(parsed, removal));
    }
    return report;
}

std::optional<CleanupReport> CleanupJournal::report(const std::string& journalPath) {
    auto parsed = parse(journalPath);
    if (!parsed) {
        return std::nullopt;
    }
    return reportOf(*parsed, journalPath);
}

bool CleanupJournal::isRunning(const std::string& journalPath) {
    return platform::FileLock::isHeld(journalPath);
}

namespace {

// A journal that gives no report is still listed, so that pictures it moved
// are never hidden: its id from its name, dated by the file.
CleanupReport unreadableReport(const std::string& path, const JournalError& error) {
    CleanupReport report;
    report.planID = idFromName(path);
    report.started = modifiedDate(path);
    report.journalPath = path;
    report.damage = error.description;
    return report;
}

} // namespace

std::vector<CleanupReport> CleanupJournal::history(const std::string& directory) {
    std::vector<CleanupReport> reports;
    for (const auto& path : journalFiles(directory)) {
        auto parsed = read(path);
        if (!parsed) {
            reports.push_back(unreadableReport(path, parsed.error()));
            continue;
        }
        CleanupReport report = reportOf(*parsed, path);
        report.running = !parsed->finished && isRunning(path);
        reports.push_back(std::move(report));
    }
    std::ranges::sort(reports, kNewestFirst, [](const CleanupReport& report) {
        return std::tie(report.started, report.journalPath);
    });
    return reports;
}

std::vector<std::string> CleanupJournal::unfinished(const std::string& directory) {
    std::vector<std::pair<Date, std::string>> found;
    for (const auto& path : journalFiles(directory)) {
        auto parsed = parse(path);
        if (parsed && parsed->needsReconciling() && !isRunning(path)) {
            found.emplace_back(parsed->started, path);
        }
    }
    std::ranges::sort(found, kNewestFirst);
    std::vector<std::string> paths;
    paths.reserve(found.size());
    for (auto& [started, path] : found) {
        paths.push_back(std::move(path));
    }
    return paths;
}

std::expected<CleanupReport, JournalError>
CleanupJournal::reconcile(const std::vector<std::string>& trashFolders, Date now) {
    auto parsed = read(path_);
    if (!parsed) {
        return std::unexpected(parsed.error());
    }
    std::vector<Entry> entries;
    std::set<std::string> decided;
    for (const auto& removal : parsed->plan.removals) {
        const std::string& item = removal.path;
        if (!decided.insert(item).second) {
            continue;
        }
        Settled settled;
        if (auto pending = parsed->putBacks.find(item); pending != parsed->putBacks.end()) {
            settled = putBackSettled(pending->second, parsed->trashedIdentity(removal));
        } else if (parsed->outcomes.contains(item)) {
            continue;
        } else if (parsed->intents.contains(item)) {
            auto reserved = parsed->reserved.find(item);
            settled = whereItIs(removal,
                                reserved != parsed->reserved.end() ? reserved->second
                                                                   : std::vector<std::string>{},
                                trashFolders);
        } else {
            // No intent, so it never began to move.
            settled.outcome = ItemOutcome::skipped(std::string(
                parsed->finished ? journal_texts::kNeverMoved : journal_texts::kNotAttempted));
        }
        if (settled.outcome) {
            entries.push_back(Entry::ofOutcome(item, std::move(*settled.outcome), now));
        }
        if (settled.note) {
            entries.push_back(Entry::ofNote(item, std::move(*settled.note), now));
        }
    }
    bool cutShort = !parsed->finished;
    if (cutShort) {
        entries.push_back(Entry::ofFinished(now));
    }
    if (auto written = write(entries); !written) {
        return std::unexpected(written.error());
    }
    auto after = read(path_);
    if (!after) {
        return std::unexpected(after.error());
    }
    removeOrphanRecords(*parsed, *after);
    CleanupReport report = reportOf(*after, path_);
    report.reconciled = cutShort;
    return report;
}

std::vector<CleanupReport> CleanupJournal::recoverInterrupted(const std::string& directory) {
    return recoverInterrupted(directory, &TrashLocation::candidates);
}

std::vector<CleanupReport>
CleanupJournal::recoverInterrupted(const std::string& directory,
                                   const TrashFoldersFor& trashFoldersFor) {
    std::vector<CleanupReport> reports;
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
            auto reconciled = journal->reconcile(trashFoldersOf(parsed->plan, trashFoldersFor));
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

} // namespace brevant
