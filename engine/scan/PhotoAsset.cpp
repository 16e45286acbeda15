#include "PhotoAsset.hpp"

#include "engine/scan/PathRules.hpp"
#include "engine/support/Json.hpp"
#include "engine/support/Texts.hpp"

#include <fmt/format.h>

namespace brevant {

namespace {

bool relationshipCounts(const PhotoAsset& asset, Relationship relationship) {
    switch (relationship) {
    case Relationship::sidecar:
        // The catalog manages its own sidecars.
        return !asset.catalog;
    case Relationship::rawPair:
        return !asset.catalog || !asset.catalog->keepsRawPairTogether();
    case Relationship::livePhoto:
    case Relationship::editedOriginal:
        return true;
    }
    return true;
}

} // namespace

std::string PhotoAsset::name() const {
    if (library) {
        return library->filename;
    }
    return PathRules::lastComponent(path);
}

std::string PhotoAsset::folder() const {
    if (library) {
        return "Photos Library";
    }
    return PathRules::parentFolder(path);
}

std::optional<std::string> PhotoAsset::fixedKeepReason() const {
    if (library && library->isFavorite) {
        return "A favourite in Photos, so it is kept";
    }
    for (Relationship relationship : relationships) {
        if (relationshipCounts(*this, relationship)) {
            return std::string(reason(relationship));
        }
    }
    if (auto reason = catalog ? catalog->keepReason() : std::nullopt) {
        return reason;
    }
    if (snapshot.linkCount > 1 || !otherNames.empty()) {
        return "Has another name on disk (a hard link), so moving it to the Trash would free "
               "nothing";
    }
    if (isReadOnlyVolume) {
        return fmt::format("On a volume {} cannot change", texts::kMachine);
    }
    return std::nullopt;
}

void to_json(nlohmann::ordered_json& j, const PhotoAsset& value) {
    j = json::Json::object();
    j["path"] = json::text(value.path);
    j["root"] = json::text(value.root);
    j["snapshot"] = value.snapshot;
    j["format"] = json::enumValue(value.format);
    json::putOptional(j, "pixelWidth", value.pixelWidth);
    json::putOptional(j, "pixelHeight", value.pixelHeight);
    j["otherNames"] = json::textList(value.otherNames);
    j["relationships"] = json::Json::array();
    for (Relationship relationship : value.relationships) {
        j["relationships"].push_back(json::enumValue(relationship));
    }
    j["isCloudSynced"] = value.isCloudSynced;
    j["isReadOnlyVolume"] = value.isReadOnlyVolume;
    json::putOptionalText(j, "volumeName", value.volumeName.get());
    j["isExternalVolume"] = value.isExternalVolume;
    json::putOptional(j, "library", value.library.get());
    putReference(j, value.catalog.get());
}

void from_json(const nlohmann::ordered_json& j, PhotoAsset& value) {
    value.path = json::getText(j, "path");
    value.root = json::getText(j, "root");
    value.snapshot = json::get<FileSnapshot>(j, "snapshot");
    value.format = json::getEnum<PhotoFormat>(j, "format");
    value.pixelWidth = json::getOptional<int>(j, "pixelWidth");
    value.pixelHeight = json::getOptional<int>(j, "pixelHeight");
    value.otherNames = json::getTextList(j, "otherNames");
    value.relationships.clear();
    for (const auto& item : json::field(j, "relationships")) {
        value.relationships.push_back(json::toEnum<Relationship>(item));
    }
    value.isCloudSynced = json::get<bool>(j, "isCloudSynced");
    value.isReadOnlyVolume = json::get<bool>(j, "isReadOnlyVolume");
    value.volumeName = json::getOptionalText(j, "volumeName");
    value.isExternalVolume = json::get<bool>(j, "isExternalVolume");
    value.library = json::getOptional<LibraryRef>(j, "library");
    value.catalog = getReference(j);
}

} // namespace brevant
