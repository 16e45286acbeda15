#include "CleanupPlan.hpp"

#include "engine/cleanup/JournalTexts.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"

namespace brevant {

std::string CleanupPlan::encoded() const {
    json::Json j = *this;
    return j.dump();
}

std::expected<CleanupPlan, std::string> CleanupPlan::decode(std::string_view document) {
    try {
        return json::parse(document).get<CleanupPlan>();
    } catch (const std::exception& e) {
        return std::unexpected(std::string(journal_texts::kPlanUnreadable) + e.what());
    }
}

void to_json(nlohmann::ordered_json& j, const KeeperEvidence& value) {
    j = json::Json::object();
    j["path"] = json::text(value.path);
    j["snapshot"] = value.snapshot;
}

void from_json(const nlohmann::ordered_json& j, KeeperEvidence& value) {
    value.path = json::getText(j, "path");
    value.snapshot = json::get<FileSnapshot>(j, "snapshot");
}

void to_json(nlohmann::ordered_json& j, const PlannedRemoval& value) {
    j = json::Json::object();
    j["path"] = json::text(value.path);
    j["root"] = json::text(value.root);
    j["snapshot"] = value.snapshot;
    j["sha256"] = json::text(value.sha256);
    j["keepers"] = value.keepers;
    j["isCloudSynced"] = value.isCloudSynced;
    json::putOptionalText(j, "volumeName", value.volumeName);
    j["isExternalVolume"] = value.isExternalVolume;
    if (value.matchKind) {
        j["matchKind"] = json::enumValue(*value.matchKind);
    }
    json::putOptionalText(j, "libraryFilename", value.libraryFilename);
    putItem(j, value.catalog);
}

void from_json(const nlohmann::ordered_json& j, PlannedRemoval& value) {
    value.path = json::getText(j, "path");
    value.root = json::getText(j, "root");
    value.snapshot = json::get<FileSnapshot>(j, "snapshot");
    value.sha256 = json::getText(j, "sha256");
    value.keepers = json::get<std::vector<KeeperEvidence>>(j, "keepers");
    value.isCloudSynced = json::get<bool>(j, "isCloudSynced");
    value.volumeName = json::getOptionalText(j, "volumeName");
    value.isExternalVolume = json::get<bool>(j, "isExternalVolume");
    value.matchKind.reset();
    if (json::has(j, "matchKind")) {
        value.matchKind = json::getEnum<MatchKind>(j, "matchKind");
    }
    value.libraryFilename = json::getOptionalText(j, "libraryFilename");
    value.catalog = getItem(j);
}

void to_json(nlohmann::ordered_json& j, const CleanupPlan& value) {
    j = json::Json::object();
    j["id"] = value.id;
    j["created"] = json::isoDate(value.created);
    j["roots"] = json::textList(value.roots);
    j["removals"] = value.removals;
}

void from_json(const nlohmann::ordered_json& j, CleanupPlan& value) {
    value.id = json::get<Uuid>(j, "id");
    value.created = json::getIsoDate(j, "created");
    value.roots = json::getTextList(j, "roots");
    value.removals = json::get<std::vector<PlannedRemoval>>(j, "removals");
}

} // namespace brevant
