#include "JournalEntry.hpp"

#include "engine/support/IsoDate.hpp"

#include <ostream>

namespace brevant {

std::string_view rawValue(JournalEntryKind kind) {
    switch (kind) {
    case JournalEntryKind::plan:
        return "plan";
    case JournalEntryKind::intent:
        return "intent";
    case JournalEntryKind::outcome:
        return "outcome";
    case JournalEntryKind::finished:
        return "finished";
    case JournalEntryKind::note:
        return "note";
    case JournalEntryKind::putBack:
        return "putBack";
    case JournalEntryKind::writing:
        return "writing";
    case JournalEntryKind::copy:
        return "copy";
    }
    return "note";
}

void PrintTo(JournalEntryKind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void putLineFields(nlohmann::ordered_json& j, const JournalLine& value) {
    json::putOptionalText(j, "itemID", value.itemID);
    json::putOptional(j, "outcome", value.outcome);
    json::putOptionalText(j, "text", value.text);
    json::putOptionalText(j, "trashPath", value.trashPath);
    json::putOptionalText(j, "destination", value.destination);
    json::putOptionalText(j, "temporary", value.temporary);
    json::putOptional(j, "copy", value.copy);
    j["at"] = json::isoDate(value.at);
}

void getLineFields(const nlohmann::ordered_json& j, JournalLine& value) {
    value.kind = json::getEnum<JournalEntryKind>(j, "kind");
    value.itemID = json::getOptionalText(j, "itemID");
    value.outcome = json::getOptional<ItemOutcome>(j, "outcome");
    value.text = json::getOptionalText(j, "text");
    value.trashPath = json::getOptionalText(j, "trashPath");
    value.destination = json::getOptionalText(j, "destination");
    value.temporary = json::getOptionalText(j, "temporary");
    value.copy = json::getOptional<FileSnapshot>(j, "copy");
    value.at = json::getIsoDate(j, "at");
}

std::string dumpedLine(const nlohmann::ordered_json& j) {
    // Every text went through path_text and is valid UTF-8; replacing is
    // only a guard.
    return j.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace brevant
