#include "GroupSummary.hpp"

#include <algorithm>
#include <array>

namespace brevant {

GroupSummary GroupSummary::of(const std::vector<DuplicateGroup>& groups) {
    constexpr auto kKinds = EnumCases<MatchKind>::kAll;
    std::array<KindSummary, kKinds.size()> byKind{};
    for (std::size_t k = 0; k < kKinds.size(); ++k) {
        byKind[k].kind = kKinds[k];
    }
    GroupSummary summary;
    for (const auto& group : groups) {
        auto members = static_cast<int>(group.members.size());
        std::int64_t bytes = group.extraBytes();
        KindSummary& kind = *std::ranges::find(byKind, group.kind, &KindSummary::kind);
        kind.groups += 1;
        kind.pictures += members;
        kind.bytesToFree += bytes;
        summary.groups += 1;
        summary.pictures += members;
        summary.bytesToFree += bytes;
    }
    for (const KindSummary& kind : byKind) {
        if (kind.groups > 0) {
            summary.kinds.push_back(kind);
        }
    }
    return summary;
}

} // namespace brevant
