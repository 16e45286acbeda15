#include "CleanupApproval.hpp"

#include "engine/cleanup/JournalTexts.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"

namespace brevant {

std::string CleanupApproval::encoded() const {
    json::Json j = *this;
    return j.dump();
}

std::expected<CleanupApproval, std::string> CleanupApproval::decode(std::string_view document) {
    try {
        return json::parse(document).get<CleanupApproval>();
    } catch (const std::exception& e) {
        return std::unexpected(std::string(journal_texts::kApprovalUnreadable) + e.what());
    }
}

void to_json(nlohmann::ordered_json& j, const CleanupApproval& value) {
    j = json::Json::object();
    j["planID"] = value.planID;
    j["approvedAt"] = json::isoDate(value.approvedAt);
}

void from_json(const nlohmann::ordered_json& j, CleanupApproval& value) {
    value.planID = json::get<Uuid>(j, "planID");
    value.approvedAt = json::getIsoDate(j, "approvedAt");
}

} // namespace brevant
