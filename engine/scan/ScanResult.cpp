#include "ScanResult.hpp"

#include "engine/support/Json.hpp"

#include <algorithm>

namespace brevant {

namespace {

// An empty file holds no picture and a damaged one cannot be decoded, so
// neither can be a copy of one; a link is never followed by design.
bool couldHideACopy(SkipReason reason) {
    return reason != SkipReason::symbolicLink && reason != SkipReason::empty &&
           reason != SkipReason::corrupt;
}

} // namespace

ScanResult ScanResult::make(std::vector<std::string> roots, std::vector<DuplicateGroup> groups) {
    ScanResult result;
    result.roots = std::move(roots);
    result.groups = std::move(groups);
    result.started = Date::now();
    result.finished = result.started;
    return result;
}

int ScanResult::matched() const {
    int total = 0;
    for (const auto& group : groups) {
        total += static_cast<int>(group.members.size());
    }
    return total;
}

bool ScanResult::isIncomplete() const {
    if (cancelled) {
        return true;
    }
    bool missedFile = std::ranges::any_of(
        skipped, [](const SkippedFile& file) { return couldHideACopy(file.reason); });
    bool missedFolder = std::ranges::any_of(excluded, [](const ExcludedItem& item) {
        return item.kind == ExcludedItem::Kind::unreadableFolder ||
               item.kind == ExcludedItem::Kind::refusedRoot;
    });
    return missedFile || missedFolder;
}

std::string ScanResult::encoded(int indent) const {
    json::Json j = *this;
    return j.dump(indent);
}

std::expected<ScanResult, std::string> ScanResult::decode(std::string_view document) {
    try {
        return json::parse(document).get<ScanResult>();
    } catch (const std::exception& e) {
        return std::unexpected(std::string("The scan result could not be read: ") + e.what());
    }
}

void to_json(nlohmann::ordered_json& j, const ScanResult& value) {
    j = json::Json::object();
    j["roots"] = json::textList(value.roots);
    j["groups"] = value.groups;
    j["discovered"] = value.discovered;
    j["examined"] = value.examined;
    j["otherFiles"] = value.otherFiles;
    j["skipped"] = value.skipped;
    j["excluded"] = value.excluded;
    j["cancelled"] = value.cancelled;
    j["started"] = json::date(value.started);
    j["finished"] = json::date(value.finished);
    j["hardLinksFolded"] = value.hardLinksFolded;
    j["pictures"] = value.pictures;
    j["downloadedBytes"] = value.downloadedBytes;
    j["lightroomRejected"] = value.lightroomRejected;
    j["captureOneRed"] = value.captureOneRed;
}

void from_json(const nlohmann::ordered_json& j, ScanResult& value) {
    value.roots = json::getTextList(j, "roots");
    value.groups = json::get<std::vector<DuplicateGroup>>(j, "groups");
    value.discovered = json::get<int>(j, "discovered");
    value.examined = json::get<int>(j, "examined");
    value.otherFiles = json::get<int>(j, "otherFiles");
    value.skipped = json::get<std::vector<SkippedFile>>(j, "skipped");
    value.excluded = json::get<std::vector<ExcludedItem>>(j, "excluded");
    value.cancelled = json::get<bool>(j, "cancelled");
    value.started = json::getDate(j, "started");
    value.finished = json::getDate(j, "finished");
    value.hardLinksFolded = json::get<int>(j, "hardLinksFolded");
    value.pictures = json::get<std::vector<PhotoAsset>>(j, "pictures");
    value.downloadedBytes = json::get<std::int64_t>(j, "downloadedBytes");
    value.lightroomRejected = json::get<int>(j, "lightroomRejected");
    value.captureOneRed = json::get<int>(j, "captureOneRed");
}

} // namespace brevant
