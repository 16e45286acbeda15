#include "CompressionPlan.hpp"

#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"

#include <ostream>

namespace brevant {

std::string_view rawValue(MediaKind kind) {
    switch (kind) {
    case MediaKind::photo:
        return "photo";
    case MediaKind::video:
        return "video";
    case MediaKind::motionPhoto:
        return "motionPhoto";
    }
    return "photo";
}

void PrintTo(MediaKind kind, std::ostream* os) {
    *os << rawValue(kind);
}

std::int64_t CompressionPlan::plannedBytes() const {
    std::int64_t total = 0;
    for (const auto& item : items) {
        total += item.snapshot.size;
    }
    return total;
}

std::int64_t CompressionPlan::estimatedSaving() const {
    std::int64_t total = 0;
    for (const auto& item : items) {
        total += item.estimatedSaving;
    }
    return total;
}

void to_json(nlohmann::ordered_json& j, const PlannedCompression& value) {
    j = json::Json::object();
    j["path"] = json::text(value.path);
    j["root"] = json::text(value.root);
    j["snapshot"] = value.snapshot;
    j["kind"] = json::enumValue(value.kind);
    j["format"] = json::text(value.format);
    j["width"] = value.width;
    j["height"] = value.height;
    j["durationSeconds"] = value.durationSeconds;
    j["estimatedSaving"] = value.estimatedSaving;
}

void from_json(const nlohmann::ordered_json& j, PlannedCompression& value) {
    value.path = json::getText(j, "path");
    value.root = json::getText(j, "root");
    value.snapshot = json::get<FileSnapshot>(j, "snapshot");
    value.kind = json::getEnum<MediaKind>(j, "kind");
    value.format = json::getText(j, "format");
    value.width = json::get<int>(j, "width");
    value.height = json::get<int>(j, "height");
    value.durationSeconds = json::get<double>(j, "durationSeconds");
    value.estimatedSaving = json::get<std::int64_t>(j, "estimatedSaving");
}

void to_json(nlohmann::ordered_json& j, const CompressionPlan& value) {
    j = json::Json::object();
    j["id"] = value.id;
    j["created"] = json::isoDate(value.created);
    j["roots"] = json::textList(value.roots);
    j["items"] = value.items;
}

void from_json(const nlohmann::ordered_json& j, CompressionPlan& value) {
    value.id = json::get<Uuid>(j, "id");
    value.created = json::getIsoDate(j, "created");
    value.roots = json::getTextList(j, "roots");
    value.items = json::get<std::vector<PlannedCompression>>(j, "items");
}

} // namespace brevant
