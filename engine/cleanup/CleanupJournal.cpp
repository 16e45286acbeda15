#include "CleanupJournal.hpp"

#include "engine/cleanup/JournalTexts.hpp"
#include "engine/cleanup/TrashLocation.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/FolderListing.hpp"
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

std::string nameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

JournalError openError(const std::string& path, int code) {
    return {code, journal_texts::cannotOpen(nameOf(path), platform::errorText(code))};
}

JournalError writeError(const std::string& path, int code) {
    return {code, journal_texts::cannotWrite(nameOf(path), platform::errorText(code))};
}

// Whatever made the create fail, it is reported as the file-already-exists
// error: a journal is only ever created once, for a plan not yet run. The
// code keeps the system's own reason.
JournalError createError(const std::string& directory, const std::string& name, int code) {
    return {code, journal_texts::alreadyExists(name, directory)};
}

JournalError unreadableError(const std::string& path) {
    return {EINVAL, journal_texts::unreadable(nameOf(path))};
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

void fold(CleanupJournal::Parsed& parsed, bool& hasPlan, Entry entry) {
    switch (entry.kind) {
    case Entry::Kind::plan:
        if (entry.plan) {
            parsed.plan = std::move(*entry.plan);
            parsed.started = entry.at;
            hasPlan = true;
        }
        return;
    case Entry::Kind::intent:
        if (entry.itemID) {
            parsed.intents.insert(std::move(*entry.itemID));
        }
        return;
    case Entry::Kind::outcome:
        if (entry.itemID && entry.outcome) {
            parsed.outcomes.insert_or_assign(
                std::move(*entry.itemID),
                CleanupJournal::RecordedOutcome{std::move(*entry.outcome), entry.at});
        }
        return;
    case Entry::Kind::note:
        if (entry.itemID && entry.text) {
            parsed.notes[std::move(*entry.itemID)].push_back(std::move(*entry.text));
        }
        return;
    case Entry::Kind::finished:
        parsed.finished = entry.at;
        return;
    }
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

// Where an item with an intent but no outcome is now. Only looks.
ItemOutcome whereItIs(const PlannedRemoval& removal, const std::vector<std::string>& trashFolders) {
    auto inPlace = FileSnapshot::read(removal.path);
    if (inPlace && inPlace->identity == removal.snapshot.identity) {
        return ItemOutcome::skipped(std::string(journal_texts::kStillInPlace));
    }
    for (const auto& folder : trashFolders) {
        if (auto found = TrashLocation::find(folder, removal.snapshot.identity)) {
            return ItemOutcome::movedToTrash(std::move(found));
        }
    }
    return ItemOutcome::unknown(std::string(journal_texts::kNotFoundInTrash));
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

Entry Entry::ofIntent(std::string itemID, Date at) {
    return {.kind = Kind::intent, .itemID = std::move(itemID), .at = at};
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
    j["at"] = json::isoDate(value.at);
}

void from_json(const nlohmann::ordered_json& j, CleanupJournal::Entry& value) {
    value.kind = json::getEnum<Entry::Kind>(j, "kind");
    value.plan = json::getOptional<CleanupPlan>(j, "plan");
    value.itemID = json::getOptionalText(j, "itemID");
    value.outcome = json::getOptional<ItemOutcome>(j, "outcome");
    value.text = json::getOptionalText(j, "text");
    value.at = json::getIsoDate(j, "at");
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
    return writeLine(entry.encoded());
}

std::expected<void, JournalError> CleanupJournal::writeLine(std::string line) {
    if (file_.lastAppendCutShort()) {
        // Step past the piece of a line that write left, in the same call.
        line.insert(line.begin(), '\n');
    }
    line.push_back('\n');
    if (auto appended = file_.append(line); !appended) {
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

std::optional<CleanupJournal::Parsed> CleanupJournal::parse(const std::string& journalPath) {
    auto bytes = AtomicFile::read(journalPath);
    if (!bytes) {
        return std::nullopt;
    }
    return parseContents(
        std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
}

std::optional<CleanupJournal::Parsed> CleanupJournal::parseContents(std::string_view contents) {
    // Each line is decoded on its own, so a torn line (even one cut inside
    // a character) costs only itself.
    Parsed parsed;
    bool hasPlan = false;
    while (!contents.empty()) {
        std::size_t end = contents.find('\n');
        std::string_view line = contents.substr(0, end);
        contents.remove_prefix(end == std::string_view::npos ? contents.size() : end + 1);
        if (line.empty()) {
            continue;
        }
        if (auto entry = Entry::decode(line)) {
            fold(parsed, hasPlan, std::move(*entry));
        }
    }
    if (!hasPlan) {
        return std::nullopt;
    }
    return parsed;
}

CleanupReport CleanupJournal::reportOf(const Parsed& parsed, std::string journalPath) {
    CleanupReport report;
    report.planID = parsed.plan.id;
    report.started = parsed.started;
    report.finished = parsed.finished;
    report.journalPath = std::move(journalPath);
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

std::vector<CleanupReport> CleanupJournal::history(const std::string& directory) {
    std::vector<CleanupReport> reports;
    for (const auto& path : journalFiles(directory)) {
        if (auto report = CleanupJournal::report(path)) {
            reports.push_back(std::move(*report));
        }
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
        if (parsed && !parsed->finished) {
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
    auto parsed = parse(path_);
    if (!parsed) {
        return std::unexpected(unreadableError(path_));
    }
    std::set<std::string> decided;
    for (const auto& removal : parsed->plan.removals) {
        const std::string& item = removal.path;
        if (parsed->outcomes.contains(item) || !decided.insert(item).second) {
            continue;
        }
        ItemOutcome outcome = parsed->intents.contains(item)
                                  ? whereItIs(removal, trashFolders)
                                  : ItemOutcome::skipped(std::string(journal_texts::kNotAttempted));
        if (auto written = write(Entry::ofOutcome(item, std::move(outcome), now)); !written) {
            return std::unexpected(written.error());
        }
    }
    if (!parsed->finished) {
        if (auto written = write(Entry::ofFinished(now)); !written) {
            return std::unexpected(written.error());
        }
    }
    auto report = CleanupJournal::report(path_);
    if (!report) {
        return std::unexpected(unreadableError(path_));
    }
    report->reconciled = true;
    return *report;
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
        if (auto journal = appendingTo(path)) {
            auto reconciled = journal->reconcile(trashFoldersOf(parsed->plan, trashFoldersFor));
            if (reconciled) {
                reports.push_back(std::move(*reconciled));
                continue;
            }
        }
        // Not reconciled this time; shown as it stands and tried again later.
        reports.push_back(reportOf(*parsed, path));
    }
    return reports;
}

} // namespace brevant
