#include "JournalState.hpp"

#include "engine/cleanup/JournalTexts.hpp"
#include "engine/cleanup/TrashLocation.hpp"
#include "engine/platform/FreedesktopTrash.hpp"

#include <algorithm>

namespace brevant {

namespace {

using Kind = JournalEntryKind;

// A file in the Trash at `trashPath`, as a regular file.
std::optional<FileSnapshot> trashedFile(const std::string& trashPath) {
    auto found = FileSnapshot::read(trashPath);
    if (!found || !found->isRegularFile || found->isSymbolicLink) {
        return std::nullopt;
    }
    return found;
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
std::vector<std::string> trashPathsOf(const JournalState& state, const std::string& item) {
    std::vector<std::string> paths;
    if (auto reserved = state.reserved.find(item); reserved != state.reserved.end()) {
        paths = reserved->second;
    }
    if (auto pending = state.putBacks.find(item); pending != state.putBacks.end()) {
        paths.push_back(pending->second.trashPath);
    }
    return paths;
}

} // namespace

bool JournalState::needsReconciling() const {
    if (cutBeforePlan) {
        return false;
    }
    if (!finished || !putBacks.empty()) {
        return true;
    }
    return std::ranges::any_of(
        intents, [this](const std::string& item) { return !outcomes.contains(item); });
}

FileIdentity JournalState::trashedIdentity(const std::string& item,
                                           const FileIdentity& planned) const {
    if (auto recorded = outcomes.find(item); recorded != outcomes.end()) {
        if (const auto& identity = recorded->second.outcome.identity) {
            return *identity;
        }
    }
    return planned;
}

std::optional<std::string> JournalState::trashPathOf(const std::string& item) const {
    auto recorded = outcomes.find(item);
    if (recorded == outcomes.end() ||
        recorded->second.outcome.kind != ItemOutcome::Kind::movedToTrash) {
        return std::nullopt;
    }
    return recorded->second.outcome.trashPath;
}

void JournalFolding::see(const std::optional<std::string>& item) {
    if (item && seen.insert(*item).second) {
        itemsSeen.push_back(*item);
    }
}

void foldLine(JournalState& state, JournalFolding& folding, JournalLine line) {
    if (!folding.hasEntry) {
        state.started = line.at;
        folding.hasEntry = true;
    }
    folding.see(line.itemID);
    switch (line.kind) {
    case Kind::plan:
        return;
    case Kind::intent:
        if (line.itemID) {
            if (line.trashPath) {
                state.reserved[*line.itemID].push_back(std::move(*line.trashPath));
            }
            state.intents.insert(std::move(*line.itemID));
        }
        return;
    case Kind::outcome:
        if (line.itemID && line.outcome) {
            state.putBacks.erase(*line.itemID);
            state.outcomes.insert_or_assign(std::move(*line.itemID),
                                            RecordedOutcome{std::move(*line.outcome), line.at});
        }
        return;
    case Kind::note:
        if (line.itemID && line.text) {
            // A Put Back that did not happen ends with its note.
            state.putBacks.erase(*line.itemID);
            state.notes[std::move(*line.itemID)].push_back(std::move(*line.text));
        }
        return;
    case Kind::finished:
        state.finished = line.at;
        return;
    case Kind::putBack:
        if (line.itemID && line.trashPath && line.destination) {
            state.putBacks.insert_or_assign(
                std::move(*line.itemID),
                PendingPutBack{std::move(*line.trashPath), std::move(*line.destination)});
        }
        return;
    case Kind::writing:
        if (line.itemID && line.temporary) {
            state.temporaries[std::move(*line.itemID)].push_back(std::move(*line.temporary));
        }
        return;
    case Kind::copy:
        if (line.itemID && line.temporary && line.destination && line.copy) {
            state.copies.insert_or_assign(
                std::move(*line.itemID),
                WrittenCopy{std::move(*line.temporary), std::move(*line.destination), *line.copy});
        }
        return;
    }
}

SettledItem whereItIs(const JournalFileItem& item, const std::vector<std::string>& reserved,
                      const std::vector<std::string>& trashFolders) {
    const FileIdentity& planned = item.identity;
    for (auto slot = reserved.rbegin(); slot != reserved.rend(); ++slot) {
        auto found = trashedFile(*slot);
        if (!found) {
            continue;
        }
        bool same = found->identity == planned;
        if (same || platform::FreedesktopTrash::recordedPath(*slot) == item.path) {
            SettledItem settled{.outcome = ItemOutcome::movedToTrash(*slot, found->identity)};
            if (!same) {
                settled.note = std::string(journal_texts::kChangedAsItMoved);
            }
            return settled;
        }
    }
    auto inPlace = FileSnapshot::read(item.path);
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

SettledItem putBackSettled(const PendingPutBack& pending, const FileIdentity& moved) {
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

void removeOrphanRecords(const JournalState& before, const JournalState& after,
                         const std::vector<std::string>& items) {
    for (const auto& item : items) {
        std::optional<std::string> inTrash;
        if (auto recorded = after.outcomes.find(item); recorded != after.outcomes.end()) {
            inTrash = recorded->second.outcome.trashPath;
        }
        for (const auto& trashPath : trashPathsOf(before, item)) {
            if (trashPath != inTrash && isOrphanRecord(trashPath, item)) {
                (void)platform::FreedesktopTrash::removeTrashInfo(trashPath);
            }
        }
    }
}

RecordedOutcome assumedOutcome(const JournalState& state, const std::string& item,
                               std::string_view notAttempted) {
    // No outcome of its own: dated when the journal last said where things
    // stood.
    Date at = state.finished.value_or(state.started);
    if (state.intents.contains(item)) {
        return {ItemOutcome::unknown(std::string(journal_texts::kStoppedWhileMoving)), at};
    }
    return {ItemOutcome::skipped(std::string(notAttempted)), at};
}

std::vector<std::string>
trashFoldersOf(const std::vector<std::string>& paths,
               const std::function<std::vector<std::string>(const std::string&)>& foldersFor) {
    std::vector<std::string> folders;
    for (const auto& path : paths) {
        for (auto& folder : foldersFor(path)) {
            if (std::ranges::find(folders, folder) == folders.end()) {
                folders.push_back(std::move(folder));
            }
        }
    }
    return folders;
}

} // namespace brevant
