#pragma once

#include "engine/cleanup/ItemOutcome.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/Json.hpp"
#include "engine/support/RawValue.hpp"

#include <exception>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// What one line of a journal records.
enum class JournalEntryKind {
    plan,
    intent,
    outcome,
    finished,
    note,
    // A Put Back about to move the item out of the Trash.
    putBack,
    // A copy about to be written under a temporary name.
    writing,
    // A copy written and checked, about to take its name.
    copy,
};

template <> struct EnumCases<JournalEntryKind> {
    using Kind = JournalEntryKind;
    static constexpr std::array kAll{Kind::plan, Kind::intent,  Kind::outcome, Kind::finished,
                                     Kind::note, Kind::putBack, Kind::writing, Kind::copy};
};

[[nodiscard]] std::string_view rawValue(JournalEntryKind kind);
void PrintTo(JournalEntryKind kind, std::ostream* os);

// Everything a journal line holds but the plan, which is of the journal's
// own kind.
struct JournalLine {
    using Kind = JournalEntryKind;

    Kind kind = Kind::note;
    // The planned item's path (a copy's own path for its moves).
    std::optional<std::string> itemID;
    std::optional<ItemOutcome> outcome;
    std::optional<std::string> text;
    // intent: where in the Trash the item is about to go, written before
    // its Trash record is, so that a record left by a crash is known as
    // ours. putBack: where the item lies in the Trash.
    std::optional<std::string> trashPath;
    // putBack: where the item is about to be put. copy: the name the copy is
    // about to take.
    std::optional<std::string> destination;
    // writing, copy: the temporary file the copy is written into.
    std::optional<std::string> temporary;
    // copy: the copy's file as written and checked.
    std::optional<FileSnapshot> copy;
    Date at;

    friend bool operator==(const JournalLine&, const JournalLine&) = default;
};

// The fields after the plan, in their order on disk; absent ones left out.
void putLineFields(nlohmann::ordered_json& j, const JournalLine& value);
void getLineFields(const nlohmann::ordered_json& j, JournalLine& value);
// One line of JSON; every text went through path_text, so it is UTF-8.
[[nodiscard]] std::string dumpedLine(const nlohmann::ordered_json& j);

// One line of a journal whose plan is a `Plan`. On disk one JSON object, no
// pretty printing, keys "kind", "plan", "itemID", "outcome", "text",
// "trashPath", "destination", "temporary", "copy", "at" in that order.
template <class Plan> struct JournalEntry : JournalLine {
    std::optional<Plan> plan;

    [[nodiscard]] static JournalEntry ofPlan(Plan plan, Date at) {
        JournalEntry entry = with(Kind::plan, at);
        entry.plan = std::move(plan);
        return entry;
    }

    [[nodiscard]] static JournalEntry ofIntent(std::string itemID, Date at,
                                               std::optional<std::string> trashPath = {}) {
        JournalEntry entry = with(Kind::intent, at, std::move(itemID));
        entry.trashPath = std::move(trashPath);
        return entry;
    }

    [[nodiscard]] static JournalEntry ofPutBack(std::string itemID, std::string trashPath,
                                                std::string destination, Date at) {
        JournalEntry entry = with(Kind::putBack, at, std::move(itemID));
        entry.trashPath = std::move(trashPath);
        entry.destination = std::move(destination);
        return entry;
    }

    [[nodiscard]] static JournalEntry ofOutcome(std::string itemID, ItemOutcome outcome, Date at) {
        JournalEntry entry = with(Kind::outcome, at, std::move(itemID));
        entry.outcome = std::move(outcome);
        return entry;
    }

    [[nodiscard]] static JournalEntry ofNote(std::string itemID, std::string text, Date at) {
        JournalEntry entry = with(Kind::note, at, std::move(itemID));
        entry.text = std::move(text);
        return entry;
    }

    [[nodiscard]] static JournalEntry ofFinished(Date at) { return with(Kind::finished, at); }

    [[nodiscard]] static JournalEntry ofWriting(std::string itemID, std::string temporary,
                                                Date at) {
        JournalEntry entry = with(Kind::writing, at, std::move(itemID));
        entry.temporary = std::move(temporary);
        return entry;
    }

    [[nodiscard]] static JournalEntry ofCopy(std::string itemID, std::string temporary,
                                             std::string destination, FileSnapshot copy, Date at) {
        JournalEntry entry = with(Kind::copy, at, std::move(itemID));
        entry.temporary = std::move(temporary);
        entry.destination = std::move(destination);
        entry.copy = copy;
        return entry;
    }

    // The line's text, without its line feed.
    [[nodiscard]] std::string encoded() const {
        nlohmann::ordered_json j = *this;
        return dumpedLine(j);
    }

    [[nodiscard]] static std::optional<JournalEntry> decode(std::string_view line) {
        try {
            return json::parse(line).get<JournalEntry>();
        } catch (const std::exception&) {
            return std::nullopt;
        }
    }

    friend bool operator==(const JournalEntry&, const JournalEntry&) = default;

private:
    static JournalEntry with(Kind kind, Date at, std::optional<std::string> itemID = {}) {
        JournalEntry entry;
        entry.kind = kind;
        entry.itemID = std::move(itemID);
        entry.at = at;
        return entry;
    }
};

template <class Plan> void to_json(nlohmann::ordered_json& j, const JournalEntry<Plan>& value) {
    j = nlohmann::ordered_json::object();
    j["kind"] = json::enumValue(value.kind);
    json::putOptional(j, "plan", value.plan);
    putLineFields(j, value);
}

template <class Plan> void from_json(const nlohmann::ordered_json& j, JournalEntry<Plan>& value) {
    getLineFields(j, value);
    value.plan = json::getOptional<Plan>(j, "plan");
}

} // namespace brevant
