#include "SimilarityIndex.hpp"

#include "engine/platform/Sha256.hpp"
#include "engine/similarity/CaptureTimeline.hpp"
#include "engine/similarity/FeatureExtractor.hpp"
#include "engine/similarity/SimilarityThresholds.hpp"

#include <algorithm>
#include <bit>
#include <fmt/format.h>
#include <functional>
#include <numeric>
#include <span>
#include <utility>

namespace brevant {

namespace {

// Bits by which another orientation must match better than upright before
// a copy is said to be turned or mirrored: a nearly symmetric scene matches
// almost as well mirrored, and is no less upright for it. A match beyond
// the broadest preset's distance (a series' far shots) says nothing.
constexpr int kOrientationMargin = 6;

MemberOrientation orientationAgainst(const ImageFeatures* first, const ImageFeatures* copy) {
    if (first == nullptr || copy == nullptr || first->hashes.empty() || copy->hashes.empty()) {
        return {};
    }
    FeatureExtractor::HashMatch match = FeatureExtractor::hashMatch(*first, *copy);
    int upright = std::popcount(first->hashes[0] ^ copy->hashes[0]);
    if (match.turn == 0 || match.distance > SimilarityThresholds::kKeptHamming ||
        upright - match.distance < kOrientationMargin) {
        return {};
    }
    return MemberOrientation::fromMatched(match.turn);
}

bool pairOrder(const SimilarPair& x, const SimilarPair& y) {
    return x.a != y.a ? x.a < y.a : x.b < y.b;
}

// The accepted pairs, found among the index's own pairs (sorted by key)
// rather than listed again: a million pictures accept tens of millions.
class AcceptedPairs {
public:
    using Usable = std::function<bool(const SimilarPair&)>;

    AcceptedPairs(std::span<const SimilarPair> pairs, Usable usable)
        : pairs_(pairs)
        , usable_(std::move(usable)) {}

    [[nodiscard]] const SimilarPair* find(int x, int y) const {
        SimilarPair probe{.a = std::min(x, y), .b = std::max(x, y)};
        auto it = std::ranges::lower_bound(pairs_, probe, pairOrder);
        if (it == pairs_.end() || it->a != probe.a || it->b != probe.b || !usable_(*it)) {
            return nullptr;
        }
        return &*it;
    }

    // Closest first, each distance in picture order. Distances are whole
    // bits, so a pass per distance orders them without a second list.
    template <typename Visit> void closestFirst(Visit visit) const {
        int farthest = -1;
        for (const auto& pair : pairs_) {
            if (pair.distance > farthest && usable_(pair)) {
                farthest = pair.distance;
            }
        }
        for (int distance = 0; distance <= farthest; ++distance) {
            for (const auto& pair : pairs_) {
                if (pair.distance == distance && usable_(pair)) {
                    visit(pair);
                }
            }
        }
    }

    [[nodiscard]] bool linksAll(int picture, const std::vector<int>& cluster) const {
        return std::ranges::all_of(cluster,
                                   [&](int member) { return find(picture, member) != nullptr; });
    }

    [[nodiscard]] float spread(const std::vector<int>& members) const {
        float largest = 0;
        for (std::size_t i = 0; i < members.size(); ++i) {
            for (std::size_t j = i + 1; j < members.size(); ++j) {
                if (const SimilarPair* pair = find(members[i], members[j])) {
                    largest = std::max(largest, static_cast<float>(pair->distance));
                }
            }
        }
        return largest;
    }

private:
    std::span<const SimilarPair> pairs_;
    Usable usable_;
};

} // namespace

SimilarityIndex::SimilarityIndex(std::vector<PhotoAsset> pictures,
                                 std::vector<std::optional<ImageFeatures>> features,
                                 std::vector<SimilarPair> pairs, std::int64_t candidatesProposed,
                                 std::vector<std::string> unmeasured)
    : pictures(std::move(pictures))
    , features(std::move(features))
    , pairs(std::move(pairs))
    , candidatesProposed(candidatesProposed)
    , unmeasured(std::move(unmeasured)) {
    // The matcher's pairs come sorted; a million of them are not sorted again.
    if (!std::ranges::is_sorted(this->pairs, pairOrder)) {
        std::ranges::sort(this->pairs, pairOrder);
    }
    byPath_.resize(this->pictures.size());
    std::iota(byPath_.begin(), byPath_.end(), 0);
    std::ranges::sort(byPath_, [this](int x, int y) {
        const std::string& px = this->pictures[x].path;
        const std::string& py = this->pictures[y].path;
        return px != py ? px < py : x < y;
    });
}

std::optional<int> SimilarityIndex::indexOf(const std::string& path) const {
    auto it = std::ranges::lower_bound(
        byPath_, path, {}, [this](int i) -> const std::string& { return pictures[i].path; });
    if (it == byPath_.end() || pictures[*it].path != path) {
        return std::nullopt;
    }
    return *it;
}

const ImageFeatures* SimilarityIndex::featuresFor(const PhotoAsset& picture) const {
    auto index = indexOf(picture.path);
    if (!index || static_cast<std::size_t>(*index) >= features.size()) {
        return nullptr;
    }
    const auto& found = features[*index];
    return found ? &found.value() : nullptr;
}

std::optional<float> SimilarityIndex::distance(int a, int b) const {
    SimilarPair probe{.a = std::min(a, b), .b = std::max(a, b)};
    auto it = std::ranges::lower_bound(pairs, probe, pairOrder);
    if (it == pairs.end() || it->a != probe.a || it->b != probe.b) {
        return std::nullopt;
    }
    return it->distance;
}

std::vector<int> SimilarityIndex::paired() const {
    std::vector<bool> seen(pictures.size(), false);
    for (const auto& pair : pairs) {
        seen[pair.a] = true;
        seen[pair.b] = true;
    }
    std::vector<int> result;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        if (seen[i]) {
            result.push_back(static_cast<int>(i));
        }
    }
    return result;
}

SimilarityIndex
SimilarityIndex::withFaces(const std::unordered_map<std::string, FaceReading>& readings) const {
    SimilarityIndex copy = *this;
    for (std::size_t i = 0; i < copy.pictures.size(); ++i) {
        auto reading = readings.find(copy.pictures[i].path);
        auto& measured = copy.features[i];
        if (reading != readings.end() && measured) {
            measured->faces = reading->second;
        }
    }
    return copy;
}

namespace {

constexpr std::size_t kGroupDigestLength = 16;

// The kind, the first member's path (unique, as groups of one kind never
// share a member) and a digest of every member's path, size and modification
// time: a rescan that finds the same unchanged files gives the same id, so
// what was decided about the group finds it again, and a changed or
// exchanged member gives a new one.
std::string groupId(MatchKind kind, const std::vector<PhotoAsset>& members) {
    platform::Sha256 digest;
    for (const auto& member : members) {
        std::string line =
            fmt::format("{}\n{}\n{}.{}\n", member.path, member.snapshot.size,
                        member.snapshot.modifiedSeconds, member.snapshot.modifiedNanoseconds);
        digest.update(std::as_bytes(std::span(line)));
    }
    return fmt::format("{}:{}:{}", rawValue(kind), members.front().path,
                       digest.hexDigest().substr(0, kGroupDigestLength));
}

} // namespace

bool SimilarityIndex::isDeclaredDifferent(int a, int b) const {
    if (declaredDifferent.empty()) {
        return false;
    }
    return std::ranges::binary_search(declaredDifferent,
                                      std::pair<int, int>(std::min(a, b), std::max(a, b)));
}

std::vector<DuplicateGroup> SimilarityIndex::groups(SimilarityPreset preset) const {
    return completeLinkGroups([preset](const SimilarPair& pair) { return accepts(preset, pair); });
}

std::vector<DuplicateGroup> SimilarityIndex::groups(double maxDistance) const {
    double reach = std::min(maxDistance, static_cast<double>(SimilarityThresholds::kKeptHamming));
    return completeLinkGroups(
        [reach](const SimilarPair& pair) { return pair.shapesAgree && pair.distance <= reach; });
}

std::vector<DuplicateGroup> SimilarityIndex::completeLinkGroups(const Accept& accept) const {
    AcceptedPairs lookup(pairs, [&](const SimilarPair& pair) {
        return accept(pair) && !isDeclaredDifferent(pair.a, pair.b);
    });

    constexpr int kNone = -1;
    std::vector<int> clusterOf(pictures.size(), kNone);
    std::vector<std::vector<int>> clusters;
    auto join = [&](int picture, int cluster) {
        clusters[cluster].push_back(picture);
        clusterOf[picture] = cluster;
    };
    lookup.closestFirst([&](const SimilarPair& pair) {
        int ca = clusterOf[pair.a];
        int cb = clusterOf[pair.b];
        if (ca == kNone && cb == kNone) {
            clusters.push_back({});
            join(pair.a, static_cast<int>(clusters.size()) - 1);
            join(pair.b, static_cast<int>(clusters.size()) - 1);
        } else if (cb == kNone) {
            if (lookup.linksAll(pair.b, clusters[ca])) {
                join(pair.b, ca);
            }
        } else if (ca == kNone) {
            if (lookup.linksAll(pair.a, clusters[cb])) {
                join(pair.a, cb);
            }
        } else if (ca != cb) {
            bool complete = std::ranges::all_of(
                clusters[cb], [&](int member) { return lookup.linksAll(member, clusters[ca]); });
            if (complete) {
                for (int member : std::exchange(clusters[cb], {})) {
                    join(member, ca);
                }
            }
        }
    });

    std::vector<DuplicateGroup> result;
    for (auto& cluster : clusters) {
        if (cluster.size() >= 2) {
            float spread = lookup.spread(cluster);
            result.push_back(makeGroup(std::move(cluster), MatchKind::similar, spread));
        }
    }
    sortGroupsBySavings(result);
    return result;
}

std::vector<DuplicateGroup> SimilarityIndex::series(double window, double relatedDistance) const {
    std::vector<DuplicateGroup> result;
    auto close = [&](std::vector<int>& run) {
        if (run.size() >= 2) {
            float spread = 0;
            for (std::size_t x = 0; x < run.size(); ++x) {
                for (std::size_t y = x + 1; y < run.size(); ++y) {
                    spread = std::max(spread, distance(run[x], run[y]).value_or(0));
                }
            }
            result.push_back(makeGroup(run, MatchKind::series, spread));
        }
        run.clear();
    };
    for (const auto& [folder, dated] : capturesByFolder(pictures, features)) {
        std::vector<int> run;
        for (std::size_t k = 0; k < dated.size(); ++k) {
            if (k > 0) {
                auto related = distance(dated[k - 1].index, dated[k].index);
                bool declared = std::ranges::any_of(
                    run, [&](int member) { return isDeclaredDifferent(member, dated[k].index); });
                bool extends = dated[k].seconds - dated[k - 1].seconds <= window && related &&
                               *related <= relatedDistance && !declared;
                if (!extends) {
                    close(run);
                }
            }
            run.push_back(dated[k].index);
        }
        close(run);
    }
    sortGroupsBySavings(result);
    return result;
}

DuplicateGroup SimilarityIndex::makeGroup(std::vector<int> members, MatchKind kind,
                                          float spread) const {
    std::ranges::sort(members);
    std::vector<PhotoAsset> assets;
    assets.reserve(members.size());
    std::int64_t largest = 0;
    for (int member : members) {
        assets.push_back(pictures[member]);
        largest = std::max(largest, pictures[member].size());
    }
    std::string id = groupId(kind, assets);
    DuplicateGroup group =
        DuplicateGroup::make(std::move(id), largest, std::move(assets), kind, spread);
    if (members.empty()) {
        return group;
    }
    auto measured = [&](int picture) -> const ImageFeatures* {
        auto at = static_cast<std::size_t>(picture);
        return at < features.size() && features[at] ? &*features[at] : nullptr;
    };
    // Against the first member rather than the keeper: the keeper is chosen
    // later, by the review, and the user may change it.
    const ImageFeatures* first = measured(members.front());
    for (int member : members) {
        MemberOrientation orientation = orientationAgainst(first, measured(member));
        if (!orientation.isUpright()) {
            group.orientations.emplace(pictures[member].path, orientation);
        }
    }
    return group;
}

void sortGroupsBySavings(std::vector<DuplicateGroup>& groups) {
    // First paths differ between groups of one kind, so this order is total.
    std::ranges::sort(groups, [](const DuplicateGroup& x, const DuplicateGroup& y) {
        std::int64_t freedX = x.extraBytes();
        std::int64_t freedY = y.extraBytes();
        if (freedX != freedY) {
            return freedX > freedY;
        }
        return x.members.front().path < y.members.front().path;
    });
}

} // namespace brevant
