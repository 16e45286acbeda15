#pragma once

#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/ItemOutcome.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/Uuid.hpp"

#include <cstdint>
#include <expected>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// One planned picture and what became of it.
struct ItemReport {
    PlannedRemoval removal;
    ItemOutcome outcome;
    // When the outcome was recorded.
    Date at;
    // The journal's notes for this item, in order.
    std::vector<std::string> notes;

    friend bool operator==(const ItemReport&, const ItemReport&) = default;
};

// One cleanup as its journal tells it. Always read from the journal, never
// assembled in memory, so what is shown and what is on disk cannot differ.
struct CleanupReport {
    Uuid planID;
    // The date of the plan entry.
    Date started;
    // The date of the finished entry, if there is one.
    std::optional<Date> finished;
    // In plan order.
    std::vector<ItemReport> items;
    // The outcomes were worked out afterwards, for an interrupted run.
    bool reconciled = false;
    std::string journalPath;
    // What of the journal could not be read, as a sentence; its items are
    // then those the rest of it names.
    std::optional<std::string> damage;
    // Its run is still going on (another process holds the journal).
    bool running = false;

    [[nodiscard]] int count(ItemOutcome::Kind kind) const;

    [[nodiscard]] int moved() const { return count(ItemOutcome::Kind::movedToTrash); }

    [[nodiscard]] int skipped() const { return count(ItemOutcome::Kind::skipped); }

    [[nodiscard]] int failed() const { return count(ItemOutcome::Kind::failed); }

    [[nodiscard]] int unknown() const { return count(ItemOutcome::Kind::unknown); }

    [[nodiscard]] int restored() const { return count(ItemOutcome::Kind::restored); }

    // The scan sizes of the pictures that are in the Trash now (put-back ones
    // no longer count); the space comes free when the Trash is emptied.
    [[nodiscard]] std::int64_t freedBytes() const;

    [[nodiscard]] std::string encoded() const;
    [[nodiscard]] static std::expected<CleanupReport, std::string>
    decode(std::string_view document);

    friend bool operator==(const CleanupReport&, const CleanupReport&) = default;
};

void to_json(nlohmann::ordered_json& j, const ItemReport& value);
void from_json(const nlohmann::ordered_json& j, ItemReport& value);
void to_json(nlohmann::ordered_json& j, const CleanupReport& value);
void from_json(const nlohmann::ordered_json& j, CleanupReport& value);

} // namespace brevant
