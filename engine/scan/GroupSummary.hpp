#pragma once

#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/MatchKind.hpp"

#include <cstdint>
#include <vector>

namespace brevant {

// The groups of one kind in a result.
struct KindSummary {
    MatchKind kind = MatchKind::identical;
    int groups = 0;
    int pictures = 0;
    std::int64_t bytesToFree = 0;

    friend bool operator==(const KindSummary&, const KindSummary&) = default;
};

// A result's groups counted once, where they are formed: over a million
// pictures each count is a pass over every copy.
struct GroupSummary {
    int groups = 0;
    int pictures = 0;
    std::int64_t bytesToFree = 0;
    // Only the kinds found, in the order MatchKind lists them.
    std::vector<KindSummary> kinds;

    [[nodiscard]] static GroupSummary of(const std::vector<DuplicateGroup>& groups);

    friend bool operator==(const GroupSummary&, const GroupSummary&) = default;
};

} // namespace brevant
