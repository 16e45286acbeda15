#pragma once

#include "engine/scan/CatalogReference.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/MatchKind.hpp"
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

// One copy of a group that stays, as the scan saw it.
struct KeeperEvidence {
    std::string path;
    FileSnapshot snapshot;

    friend bool operator==(const KeeperEvidence&, const KeeperEvidence&) = default;
};

// One file to move, with everything needed to check it again just before
// it moves: its snapshot at the scan and the copies its group keeps.
struct PlannedRemoval {
    // A "photos-library:" reference for a Photos library item.
    std::string path;
    std::string root;
    FileSnapshot snapshot;
    std::string sha256;
    std::vector<KeeperEvidence> keepers;
    bool isCloudSynced = false;
    std::optional<std::string> volumeName;
    bool isExternalVolume = false;
    std::optional<MatchKind> matchKind;
    std::optional<std::string> libraryFilename;
    // The photo's entry in the catalog it came from.
    std::optional<CatalogItem> catalog;

    friend bool operator==(const PlannedRemoval&, const PlannedRemoval&) = default;
};

// What the user approves, the journal records and the executor checks item
// by item. Fixed once made.
struct CleanupPlan {
    Uuid id;
    // Stored to the second (see IsoDate.hpp).
    Date created;
    // The chosen folders the pictures were found under, sorted, no repeats.
    std::vector<std::string> roots;
    // In group order, then member order.
    std::vector<PlannedRemoval> removals;

    // One line of JSON.
    [[nodiscard]] std::string encoded() const;
    [[nodiscard]] static std::expected<CleanupPlan, std::string> decode(std::string_view document);

    friend bool operator==(const CleanupPlan&, const CleanupPlan&) = default;
};

// Keys are the field names; absent optionals are left out; paths go through
// path_text; dates are ISO 8601 text.
void to_json(nlohmann::ordered_json& j, const KeeperEvidence& value);
void from_json(const nlohmann::ordered_json& j, KeeperEvidence& value);
void to_json(nlohmann::ordered_json& j, const PlannedRemoval& value);
void from_json(const nlohmann::ordered_json& j, PlannedRemoval& value);
void to_json(nlohmann::ordered_json& j, const CleanupPlan& value);
void from_json(const nlohmann::ordered_json& j, CleanupPlan& value);

} // namespace brevant
