#pragma once

#include "engine/review/ScanMode.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/similarity/SimilarityIndex.hpp"

#include <set>
#include <string>
#include <vector>

namespace brevant {

// The one rule for which groups a scan's review holds in each mode, and for
// whose faces are read so that the keeper can compare them.
struct CleanupGroups {
    // Series: shots of one folder at most this many seconds apart.
    static constexpr double kSeriesWindow = 3.0;

    // The groups of the kind the mode looks for, as the index forms them:
    // the similar groups at the mode's preset, or the series. None in the
    // identical mode.
    [[nodiscard]] static std::vector<DuplicateGroup> found(const ScanMode& mode,
                                                           const SimilarityIndex& index);

    // What a review holds: in the identical mode the identical groups;
    // otherwise `found`, then every identical group none of whose copies
    // they already hold, largest savings first. A proven copy stays a copy
    // whatever else is looked for (even one that could not be measured), and
    // a copy is never reviewed twice. Without an index, the groups as the
    // scan gave them (the liveMovie groups in the Live Photos mode).
    [[nodiscard]] static std::vector<DuplicateGroup>
    reviewed(const ScanMode& mode, const std::vector<DuplicateGroup>& identical,
             const SimilarityIndex* index);

    // The groups whose members' faces are read, so that the keeper's face
    // rules can compare them: in the similar mode the groups of every preset,
    // so that a regroup finds each reading it needs and suggests what a
    // fresh scan at that preset would; the series in the series mode. None
    // for identical copies, which look the same.
    [[nodiscard]] static std::vector<DuplicateGroup> faceChecked(const ScanMode& mode,
                                                                 const SimilarityIndex& index);

    // `grouped`, then the identical groups apart from them, largest savings
    // first.
    [[nodiscard]] static std::vector<DuplicateGroup>
    withIdentical(std::vector<DuplicateGroup> grouped,
                  const std::vector<DuplicateGroup>& identical);

    // The groups as the files lie once the copies at `away` have left (moved
    // to the Trash): those copies leave their groups, a group left with one
    // copy goes, and the rest keep their order.
    [[nodiscard]] static std::vector<DuplicateGroup> without(std::vector<DuplicateGroup> groups,
                                                             const std::set<std::string>& away);
};

} // namespace brevant
