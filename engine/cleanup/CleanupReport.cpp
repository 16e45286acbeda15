#include "CleanupReport.hpp"

#include "engine/cleanup/JournalTexts.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"

#include <algorithm>
#include <limits>

namespace brevant {

int CleanupReport::count(ItemOutcome::Kind kind) const {
    return static_cast<int>(std::ranges::count_if(
        items, [kind](const ItemReport& item) { return item.outcome.kind == kind; }));
}

std::int64_t CleanupReport::freedBytes() const {
    std::int64_t total = 0;
    for (const auto& item : items) {
        if (item.outcome.kind != ItemOutcome::Kind::movedToTrash) {
            continue;
        }
        // Sizes come from a file on disk; a damaged one must not overflow.
        if (__builtin_add_overflow(total, item.removal.snapshot.size, &total)) {
            return std::numeric_limits<std::int64_t>::max();
        }
    }
    return total;
}

std::string CleanupReport::encoded() const {
    json::Json j = *this;
    return j.dump();
}

std::expected<CleanupReport, std::string> CleanupReport::decode(std::string_view document) {
    try {
        return json::parse(document).get<CleanupReport>();
    } catch (const std::exception& e) {
        return std::unexpected(std::string(journal_texts::kReportUnreadable) + e.what());
    }
}

void to_json(nlohmann::ordered_json& j, const ItemReport& value) {
    j = json::Json::object();
    j["removal"] = value.removal;
    j["outcome"] = value.outcome;
    j["at"] = json::isoDate(value.at);
    j["notes"] = json::textList(value.notes);
}

void from_json(const nlohmann::ordered_json& j, ItemReport& value) {
    value.removal = json::get<PlannedRemoval>(j, "removal");
    value.outcome = json::get<ItemOutcome>(j, "outcome");
    value.at = json::getIsoDate(j, "at");
    value.notes = json::getTextList(j, "notes");
}

void to_json(nlohmann::ordered_json& j, const CleanupReport& value) {
    j = json::Json::object();
    j["planID"] = value.planID;
    j["started"] = json::isoDate(value.started);
    json::putOptionalIsoDate(j, "finished", value.finished);
    j["items"] = value.items;
    j["reconciled"] = value.reconciled;
    j["journalPath"] = json::text(value.journalPath);
    json::putOptionalText(j, "damage", value.damage);
    if (value.running) {
        j["running"] = true;
    }
}

void from_json(const nlohmann::ordered_json& j, CleanupReport& value) {
    value.planID = json::get<Uuid>(j, "planID");
    value.started = json::getIsoDate(j, "started");
    value.finished = json::getOptionalIsoDate(j, "finished");
    value.items = json::get<std::vector<ItemReport>>(j, "items");
    value.reconciled = json::get<bool>(j, "reconciled");
    value.journalPath = json::getText(j, "journalPath");
    value.damage = json::getOptionalText(j, "damage");
    value.running = json::has(j, "running") && json::get<bool>(j, "running");
}

} // namespace brevant
