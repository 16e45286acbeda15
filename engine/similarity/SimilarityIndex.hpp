#pragma once

#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/similarity/FaceReading.hpp"
#include "engine/similarity/ImageFeatures.hpp"
#include "engine/similarity/SimilarPair.hpp"
#include "engine/similarity/SimilarityPreset.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace brevant {

// The measured pictures of a scan and their evaluated pairs. Grouping only
// filters the stored pairs, so changing the preset never measures again.
class SimilarityIndex {
public:
    std::vector<PhotoAsset> pictures;
    // Parallel to pictures; absent where measuring failed. The matcher's
    // index holds no detail hashes: they are spent on the pairs.
    std::vector<std::optional<ImageFeatures>> features;
    // Sorted by (a, b), each unordered pair once, a < b. Only the pairs
    // something can use are kept: those within the broadest preset's
    // distance, time neighbours within the series' distance, and pairs of
    // one folder's dated pictures within the proposal distance (they can
    // widen a series' spread).
    std::vector<SimilarPair> pairs;
    std::int64_t candidatesProposed = 0;
    std::vector<std::string> unmeasured;
    // Pictures the user said are different photos, as (a, b) with a < b,
    // sorted: their pair is never accepted, so no group or series holds both.
    std::vector<std::pair<int, int>> declaredDifferent;

    SimilarityIndex() = default;
    SimilarityIndex(std::vector<PhotoAsset> pictures,
                    std::vector<std::optional<ImageFeatures>> features,
                    std::vector<SimilarPair> pairs, std::int64_t candidatesProposed,
                    std::vector<std::string> unmeasured);

    [[nodiscard]] const ImageFeatures* featuresFor(const PhotoAsset& picture) const;
    [[nodiscard]] std::optional<int> indexOf(const std::string& path) const;
    // The kept pair's distance, if the two were kept as a pair.
    [[nodiscard]] std::optional<float> distance(int a, int b) const;

    [[nodiscard]] bool isDeclaredDifferent(int a, int b) const;
    // Indices of the pictures that occur in any pair, ascending.
    [[nodiscard]] std::vector<int> paired() const;

    // A copy whose features carry these face readings, by path.
    [[nodiscard]] SimilarityIndex
    withFaces(const std::unordered_map<std::string, FaceReading>& readings) const;

    [[nodiscard]] std::vector<DuplicateGroup> groups(SimilarityPreset preset) const;
    // Pairs within maxDistance whose shapes agree. Only pairs up to the
    // broadest preset's distance (16) are kept, so a larger maxDistance is
    // taken as 16: the groups are those of 16, never groups missing pairs.
    [[nodiscard]] std::vector<DuplicateGroup> groups(double maxDistance) const;
    // Bursts: shots of one folder at most `window` seconds apart whose pair
    // is within `relatedDistance`. A picture without features or without a
    // capture date cannot be placed in time, so it is left out and does not
    // break a run. Series are formed over all pictures, whether or not they
    // are also in a similar group: a burst is judged as a whole, and which
    // copy of a near-identical pair to keep is the similar group's question.
    [[nodiscard]] std::vector<DuplicateGroup> series(double window, double relatedDistance) const;

    // Members in ascending picture index; the id is the kind, the first member's
    // path and a digest of every member's path, size and modification time, so
    // it stays the same across rescans only while the members are unchanged.
    // Copies turned or mirrored against the first member are listed in its
    // orientations.
    [[nodiscard]] DuplicateGroup makeGroup(std::vector<int> members, MatchKind kind,
                                           float spread) const;

    friend bool operator==(const SimilarityIndex& a, const SimilarityIndex& b) {
        return a.pictures == b.pictures && a.features == b.features && a.pairs == b.pairs &&
               a.candidatesProposed == b.candidatesProposed && a.unmeasured == b.unmeasured &&
               a.declaredDifferent == b.declaredDifferent;
    }

private:
    using Accept = std::function<bool(const SimilarPair&)>;
    [[nodiscard]] std::vector<DuplicateGroup> completeLinkGroups(const Accept& accept) const;

    // Picture indices in path order: a million paths are not copied again.
    std::vector<int> byPath_;
};

// Largest freed bytes first, then by the first member's path.
void sortGroupsBySavings(std::vector<DuplicateGroup>& groups);

} // namespace brevant
