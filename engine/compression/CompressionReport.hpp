#pragma once

#include "engine/cleanup/ItemOutcome.hpp"
#include "engine/compression/CompressionPlan.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/Uuid.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// One planned file, what became of it and of its copy.
struct CompressionItemReport {
    PlannedCompression item;
    // The original's: movedToTrash once its copy was checked and kept.
    ItemOutcome outcome;
    Date at;
    std::vector<std::string> notes;
    // The checked copy that took its name beside the original, when one did.
    std::optional<std::string> copyPath;
    std::int64_t copyBytes = 0;
    // The copy's own fate after a Put Back of the original (moved to the
    // Trash, as a rule).
    std::optional<ItemOutcome> copyOutcome;

    friend bool operator==(const CompressionItemReport&, const CompressionItemReport&) = default;
};

// One compression as its journal tells it; never assembled in memory.
struct CompressionReport {
    Uuid planID;
    Date started;
    std::optional<Date> finished;
    // In plan order.
    std::vector<CompressionItemReport> items;
    // The outcomes were worked out afterwards, for an interrupted run.
    bool reconciled = false;
    std::string journalPath;
    std::optional<std::string> damage;
    bool running = false;

    [[nodiscard]] int count(ItemOutcome::Kind kind) const;

    // Originals in the Trash, each with its checked copy beside it.
    [[nodiscard]] int compressed() const { return count(ItemOutcome::Kind::movedToTrash); }

    [[nodiscard]] int restored() const { return count(ItemOutcome::Kind::restored); }

    // Refused copies and files passed over.
    [[nodiscard]] int refused() const {
        return count(ItemOutcome::Kind::skipped) + count(ItemOutcome::Kind::failed);
    }

    // What emptying the Trash frees: each original in it less its copy.
    [[nodiscard]] std::int64_t freedBytes() const;

    [[nodiscard]] std::string encoded() const;

    friend bool operator==(const CompressionReport&, const CompressionReport&) = default;
};

void to_json(nlohmann::ordered_json& j, const CompressionItemReport& value);
void to_json(nlohmann::ordered_json& j, const CompressionReport& value);

} // namespace brevant
