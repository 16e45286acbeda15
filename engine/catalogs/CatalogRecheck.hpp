#pragma once

#include "engine/cleanup/CleanupPlan.hpp"

#include <iosfwd>
#include <string>
#include <string_view>

namespace brevant {

// A planned photo that a marker left alone, with why.
struct SkippedMark {
    // The file's name.
    std::string name;
    std::string reason;

    friend bool operator==(const SkippedMark&, const SkippedMark&) = default;
};

void PrintTo(const SkippedMark& skipped, std::ostream* os);

// The checks both catalog markers make of a planned photo against the disk
// just before they change its catalog: the scan may be old by then.
struct CatalogRecheck {
    static constexpr std::string_view kNotInCatalog = "No longer in the catalog at that place.";
    static constexpr std::string_view kChanged = "Changed or moved since the scan.";
    static constexpr std::string_view kNoKeeperLeft =
        "No copy its group keeps is still there unchanged.";

    // The file is there, not a link, and is the file of the scan, unchanged.
    [[nodiscard]] static bool isUnchanged(const std::string& path, const FileSnapshot& planned);

    // At least one kept copy of the group is still there unchanged.
    [[nodiscard]] static bool hasKeeperLeft(const PlannedRemoval& removal);

    [[nodiscard]] static SkippedMark skipped(const PlannedRemoval& removal,
                                             std::string_view reason);
};

} // namespace brevant
