#include "CompressionJournal.hpp"

#include "engine/cleanup/PutBack.hpp"
#include "engine/cleanup/TrashMove.hpp"
#include "engine/compression/CompressionTexts.hpp"
#include "engine/compression/CopyNames.hpp"
#include "engine/platform/NewFile.hpp"

#include <algorithm>

namespace brevant {

template class Journal<CompressionJournalKind>;

namespace {

namespace texts = compression_texts;
using Parsed = JournalParsed<CompressionJournalKind>;
using Entry = CompressionJournal::Entry;

// Removes a temporary copy the journal named for the item, when it is still
// there as a regular file with our kind of name.
void removeLeftover(const std::string& temporary) {
    if (!CopyNames::isTemporary(temporary)) {
        return;
    }
    auto found = FileSnapshot::read(temporary);
    if (!found || !found->isRegularFile || found->isSymbolicLink) {
        return;
    }
    (void)platform::NewFile::removeOwn(temporary, found->identity.device, found->identity.inode);
}

// The copy took its name and is kept beside its original.
bool copyKept(const Parsed& parsed, const std::string& item, const WrittenCopy& copy,
              const ItemOutcome& outcome) {
    switch (outcome.kind) {
    case ItemOutcome::Kind::movedToTrash:
    case ItemOutcome::Kind::restored:
    case ItemOutcome::Kind::unknown:
        return true;
    case ItemOutcome::Kind::skipped:
    case ItemOutcome::Kind::failed:
        break;
    }
    if (outcome.text == texts::stoppedAfterCopy(copy.path)) {
        return true;
    }
    auto notes = parsed.notes.find(item);
    return notes != parsed.notes.end() &&
           std::ranges::find(notes->second, texts::copyKeptBeside(copy.path)) !=
               notes->second.end();
}

} // namespace

CompressionPlan CompressionJournalKind::planFromLines(const std::vector<std::string>& items,
                                                      const JournalState& state) {
    CompressionPlan plan;
    for (const auto& item : items) {
        // A copy's own lines name it; it is not a planned file.
        bool isCopy = std::ranges::any_of(
            state.copies, [&](const auto& entry) { return entry.second.path == item; });
        if (isCopy) {
            continue;
        }
        PlannedCompression planned;
        planned.path = item;
        planned.snapshot.identity = state.trashedIdentity(item, {});
        plan.items.push_back(std::move(planned));
    }
    return plan;
}

CompressionReport CompressionJournalKind::reportOf(const Parsed& parsed) {
    CompressionReport report;
    report.items.reserve(parsed.plan.items.size());
    for (const auto& planned : parsed.plan.items) {
        CompressionItemReport item;
        item.item = planned;
        if (auto notes = parsed.notes.find(planned.path); notes != parsed.notes.end()) {
            item.notes = notes->second;
        }
        auto recorded = parsed.outcomes.find(planned.path);
        RecordedOutcome outcome = recorded != parsed.outcomes.end()
                                      ? recorded->second
                                      : assumedOutcome(parsed, planned.path, texts::kNotAttempted);
        if (auto copy = parsed.copies.find(planned.path); copy != parsed.copies.end()) {
            if (copyKept(parsed, planned.path, copy->second, outcome.outcome)) {
                item.copyPath = copy->second.path;
                item.copyBytes = copy->second.snapshot.size;
                if (auto fate = parsed.outcomes.find(copy->second.path);
                    fate != parsed.outcomes.end()) {
                    item.copyOutcome = fate->second.outcome;
                }
            }
        }
        item.outcome = std::move(outcome.outcome);
        item.at = outcome.at;
        report.items.push_back(std::move(item));
    }
    return report;
}

SettledItem CompressionJournalKind::unmoved(const Parsed& parsed, const PlannedCompression& item) {
    bool wrote = false;
    if (auto temporaries = parsed.temporaries.find(item.path);
        temporaries != parsed.temporaries.end()) {
        for (const auto& temporary : temporaries->second) {
            removeLeftover(temporary);
        }
        wrote = true;
    }
    if (auto copy = parsed.copies.find(item.path); copy != parsed.copies.end()) {
        auto named = FileSnapshot::read(copy->second.path);
        if (named && named->identity == copy->second.snapshot.identity) {
            return {.outcome = ItemOutcome::skipped(texts::stoppedAfterCopy(copy->second.path))};
        }
        removeLeftover(copy->second.temporary);
        wrote = true;
    }
    if (wrote) {
        return {.outcome = ItemOutcome::skipped(texts::stoppedWhileWriting())};
    }
    return {.outcome = ItemOutcome::skipped(std::string(texts::kNotAttempted))};
}

std::map<std::string, std::string>
CompressionJournalKind::afterPutBack(Journal<CompressionJournalKind>& journal, const Parsed& parsed,
                                     const std::vector<std::string>& restored,
                                     const PutBackRequest& request) {
    std::shared_ptr<const Trasher> trasher =
        request.trasher ? request.trasher : std::make_shared<FileManagerTrasher>();
    std::map<std::string, std::string> companions;
    for (const auto& item : restored) {
        auto found = parsed.copies.find(item);
        if (found == parsed.copies.end()) {
            continue;
        }
        const WrittenCopy& copy = found->second;
        if (auto fate = parsed.outcomes.find(copy.path);
            fate != parsed.outcomes.end() &&
            fate->second.outcome.kind == ItemOutcome::Kind::movedToTrash) {
            continue;
        }
        std::string sentence;
        auto now = FileSnapshot::read(copy.path);
        if (!now) {
            sentence = texts::copyGone(copy.path);
        } else if (now->isSymbolicLink || !TrashMove::sameFile(*now, copy.snapshot)) {
            sentence = texts::copyChanged(copy.path);
        } else {
            auto moved = TrashMove::run(
                *trasher, copy.path, copy.snapshot,
                [&](const std::optional<std::string>& trashPath) {
                    return journal.write(Entry::ofIntent(copy.path, Date::now(), trashPath))
                        .has_value();
                });
            if (!moved.outcome) {
                sentence = texts::copyNotTrashed(copy.path, "its record could not be written.");
            } else {
                bool trashed = moved.outcome->kind == ItemOutcome::Kind::movedToTrash;
                sentence = trashed ? texts::copyTrashed(copy.path)
                                   : texts::copyNotTrashed(copy.path, moved.outcome->text);
                (void)journal.write(Entry::ofOutcome(copy.path, *moved.outcome, Date::now()));
            }
        }
        (void)journal.write(Entry::ofNote(item, sentence, Date::now()));
        companions.emplace(item, std::move(sentence));
    }
    return companions;
}

} // namespace brevant
