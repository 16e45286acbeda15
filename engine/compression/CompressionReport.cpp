#include "CompressionReport.hpp"

#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"

#include <algorithm>

namespace brevant {

int CompressionReport::count(ItemOutcome::Kind kind) const {
    return static_cast<int>(std::ranges::count_if(
        items, [kind](const CompressionItemReport& item) { return item.outcome.kind == kind; }));
}

std::int64_t CompressionReport::freedBytes() const {
    std::int64_t total = 0;
    for (const auto& item : items) {
        if (item.outcome.kind == ItemOutcome::Kind::movedToTrash) {
            total += std::max<std::int64_t>(0, item.item.snapshot.size - item.copyBytes);
        }
    }
    return total;
}

std::string CompressionReport::encoded() const {
    json::Json j = *this;
    return j.dump();
}

void to_json(nlohmann::ordered_json& j, const CompressionItemReport& value) {
    j = json::Json::object();
    j["item"] = value.item;
    j["outcome"] = value.outcome;
    j["at"] = json::isoDate(value.at);
    j["notes"] = json::textList(value.notes);
    json::putOptionalText(j, "copyPath", value.copyPath);
    j["copyBytes"] = value.copyBytes;
    json::putOptional(j, "copyOutcome", value.copyOutcome);
}

void to_json(nlohmann::ordered_json& j, const CompressionReport& value) {
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
    j["freedBytes"] = value.freedBytes();
}

} // namespace brevant
