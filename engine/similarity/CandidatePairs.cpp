// Candidate pairs of the similarity matcher: proposed cheaply from shared
// hash bytes and capture times, each evaluated once.
#include "engine/similarity/CaptureTimeline.hpp"
#include "engine/similarity/FeatureExtractor.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"
#include "engine/similarity/SimilarityThresholds.hpp"
#include "engine/support/ParallelMap.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

namespace brevant {

namespace {

constexpr int kBytes = 8;
constexpr int kTurns = 4;
constexpr int kCandidateHamming = SimilarityThresholds::kCandidateHamming;

using Turns = std::array<std::uint64_t, kTurns>;

int byteAt(std::uint64_t hash, int position) {
    return static_cast<int>((hash >> (8 * position)) & 0xFF);
}

// The hashes of the measured pictures, indexed for candidate search. For each
// byte position p and byte value v it holds the listing of pictures whose
// unturned hash has v at p (their four turns inline) and the probes that
// look there: every (picture, turn) whose turned hash has v at p. Working
// one (p, v) block at a time keeps the listing in cache while all its probes
// scan it. Compact index k stands for picture ids[k]; ids ascend.
class HashTable {
public:
    static constexpr int kValues = 256;
    static constexpr int kBlocks = kBytes * kValues;

    explicit HashTable(const std::vector<std::optional<ImageFeatures>>& features) {
        for (std::size_t i = 0; i < features.size(); ++i) {
            const auto& f = features[i];
            // Records that do not hold all four turns cannot be compared.
            if (!f || f->hashes.size() != kTurns) {
                continue;
            }
            ids_.push_back(static_cast<int>(i));
            turns_.push_back({f->hashes[0], f->hashes[1], f->hashes[2], f->hashes[3]});
        }
        for (int p = 0; p < kBytes; ++p) {
            fillListings(p);
            fillProbes(p);
        }
    }

    [[nodiscard]] std::size_t size() const { return ids_.size(); }

    [[nodiscard]] int id(int k) const { return ids_[k]; }

    // x proposes y: a turn of x shares a byte position with y's unturned
    // hash, and y is close enough to x.
    [[nodiscard]] bool proposes(int x, int y) const {
        return sharesByte(x, y, kTurns, 0) &&
               distance(turns_[x][0], turns_[y]) <= kCandidateHamming;
    }

    // Calls emit(x, y) for the pairs first met in this block, once for every
    // pair that x proposes and that is not also proposed from the other side
    // by a smaller picture: over all blocks, each unordered proposed pair
    // comes out exactly once.
    template <class Emit> [[gnu::always_inline]] void proposalsIn(int block, Emit&& emit) const {
        int p = block / kValues;
        int v = block % kValues;
        const Listing* begin = listings_[p].data() + listingOffsets_[p][v];
        const Listing* end = listings_[p].data() + listingOffsets_[p][v + 1];
        const int* probe = probes_[p].data() + probeOffsets_[p][v];
        const int* probesEnd = probes_[p].data() + probeOffsets_[p][v + 1];
        for (; probe != probesEnd; ++probe) {
            int x = *probe / kTurns;
            int t = *probe % kTurns;
            std::uint64_t unturned = turns_[x][0];
            for (const Listing* it = begin; it != end; ++it) {
                // The distance first: almost every candidate stops here.
                if (distance(unturned, it->turns) > kCandidateHamming || it->k == x) {
                    continue;
                }
                int y = it->k;
                if (sharesByte(x, y, t, p)) {
                    continue; // met at an earlier probe
                }
                if (y < x && proposes(y, x)) {
                    continue; // y emits it
                }
                emit(x, y);
            }
        }
    }

private:
    struct Listing {
        Turns turns;
        int k;
    };

    using Offsets = std::array<int, kValues + 1>;

    // Counting sort: offsets of each byte value, from how many have it.
    template <class Count> static Offsets offsetsFor(Count&& forEachValue) {
        Offsets offsets{};
        forEachValue([&](int value) { offsets[value + 1] += 1; });
        for (std::size_t v = 1; v < offsets.size(); ++v) {
            offsets[v] += offsets[v - 1];
        }
        return offsets;
    }

    void fillListings(int p) {
        listingOffsets_[p] = offsetsFor([&](auto&& count) {
            for (const Turns& t : turns_) {
                count(byteAt(t[0], p));
            }
        });
        listings_[p].resize(turns_.size());
        auto next = listingOffsets_[p];
        for (std::size_t k = 0; k < turns_.size(); ++k) {
            listings_[p][next[byteAt(turns_[k][0], p)]++] = {turns_[k], static_cast<int>(k)};
        }
    }

    void fillProbes(int p) {
        probeOffsets_[p] = offsetsFor([&](auto&& count) {
            for (const Turns& turns : turns_) {
                for (std::uint64_t h : turns) {
                    count(byteAt(h, p));
                }
            }
        });
        probes_[p].resize(turns_.size() * kTurns);
        auto next = probeOffsets_[p];
        for (std::size_t k = 0; k < turns_.size(); ++k) {
            for (int t = 0; t < kTurns; ++t) {
                probes_[p][next[byteAt(turns_[k][t], p)]++] = static_cast<int>(k) * kTurns + t;
            }
        }
    }

    // Smallest distance of a hash to any of four turns.
    [[gnu::always_inline]] static int distance(std::uint64_t h, const Turns& t) {
        return std::min(std::min(std::popcount(h ^ t[0]), std::popcount(h ^ t[1])),
                        std::min(std::popcount(h ^ t[2]), std::popcount(h ^ t[3])));
    }

    // A turn of x before (turn, position) in probing order (turns outer,
    // positions inner) shares that byte with y's unturned hash.
    [[nodiscard]] bool sharesByte(int x, int y, int turn, int position) const {
        std::uint64_t target = turns_[y][0];
        for (int t = 0; t <= std::min(turn, kTurns - 1); ++t) {
            int last = t == turn ? position : kBytes;
            for (int p = 0; p < last; ++p) {
                if (byteAt(turns_[x][t], p) == byteAt(target, p)) {
                    return true;
                }
            }
        }
        return false;
    }

    std::vector<int> ids_;
    std::vector<Turns> turns_;
    std::array<Offsets, kBytes> listingOffsets_{};
    std::array<std::vector<Listing>, kBytes> listings_;
    std::array<Offsets, kBytes> probeOffsets_{};
    std::array<std::vector<int>, kBytes> probes_;
};

std::uint64_t pairKey(int a, int b) {
    return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(a)) << 32) |
           static_cast<std::uint32_t>(b);
}

// Pairs of pictures of one folder taken at most a minute apart, as keys of
// (smaller, larger) index, sorted.
std::vector<std::uint64_t>
timeNeighbours(const std::vector<PhotoAsset>& pictures,
               const std::vector<std::optional<ImageFeatures>>& features) {
    std::vector<std::uint64_t> keys;
    for (const auto& [folder, dated] : capturesByFolder(pictures, features)) {
        for (std::size_t i = 0; i < dated.size(); ++i) {
            for (std::size_t j = i + 1; j < dated.size(); ++j) {
                if (dated[j].seconds - dated[i].seconds >
                    SimilarityThresholds::kTimeNeighbourSeconds) {
                    break;
                }
                int a = std::min(dated[i].index, dated[j].index);
                int b = std::max(dated[i].index, dated[j].index);
                keys.push_back(pairKey(a, b));
            }
        }
    }
    std::ranges::sort(keys);
    auto repeats = std::ranges::unique(keys);
    keys.erase(repeats.begin(), repeats.end());
    return keys;
}

// The evaluated pair, or nothing when it is too far apart to keep.
std::optional<SimilarPair> evaluate(int a, int b, bool timeNeighbour,
                                    const std::vector<std::optional<ImageFeatures>>& features) {
    if (a > b) {
        std::swap(a, b);
    }
    const auto& measuredA = features[a];
    const auto& measuredB = features[b];
    if (!measuredA || !measuredB) {
        return std::nullopt;
    }
    const ImageFeatures& fa = *measuredA;
    const ImageFeatures& fb = *measuredB;
    auto match = FeatureExtractor::hashMatch(fa, fb);
    double bound = timeNeighbour ? SimilarityThresholds::kSeriesRelated
                                 : static_cast<double>(SimilarityThresholds::kCandidateHamming);
    if (match.distance > bound) {
        return std::nullopt;
    }
    // Feature prints are not made on this platform, so `vision` stays absent.
    return SimilarPair{.a = a,
                       .b = b,
                       .distance = static_cast<float>(match.distance),
                       .detail = FeatureExtractor::detailDistance(fa, fb),
                       .shapesAgree = FeatureExtractor::shapesAgree(fa, fb, match.turn % 2 == 1)};
}

struct ChunkResult {
    std::vector<SimilarPair> pairs;
    std::int64_t proposed = 0;
};

[[gnu::always_inline]] inline ChunkResult
proposeInBlockWith(const HashTable& table, int block,
                   const std::vector<std::optional<ImageFeatures>>& features,
                   const std::vector<std::uint64_t>& neighbours) {
    ChunkResult result;
    table.proposalsIn(block, [&](int cx, int cy) {
        result.proposed += 1;
        int a = table.id(cx);
        int b = table.id(cy);
        bool neighbour =
            std::ranges::binary_search(neighbours, pairKey(std::min(a, b), std::max(a, b)));
        if (auto pair = evaluate(a, b, neighbour, features)) {
            result.pairs.push_back(*pair);
        }
    });
    result.pairs.shrink_to_fit();
    return result;
}

// The hot loop is built twice: with the processor's population-count
// instruction, and plainly for processors without one.
[[gnu::target("popcnt"), gnu::flatten]] ChunkResult
proposeInBlockWithPopcount(const HashTable& table, int block,
                           const std::vector<std::optional<ImageFeatures>>& features,
                           const std::vector<std::uint64_t>& neighbours) {
    return proposeInBlockWith(table, block, features, neighbours);
}

[[gnu::flatten]] ChunkResult
proposeInBlockPlain(const HashTable& table, int block,
                    const std::vector<std::optional<ImageFeatures>>& features,
                    const std::vector<std::uint64_t>& neighbours) {
    return proposeInBlockWith(table, block, features, neighbours);
}

ChunkResult proposeInBlock(const HashTable& table, int block,
                           const std::vector<std::optional<ImageFeatures>>& features,
                           const std::vector<std::uint64_t>& neighbours) {
    static const bool hasPopcount = __builtin_cpu_supports("popcnt") != 0;
    return hasPopcount ? proposeInBlockWithPopcount(table, block, features, neighbours)
                       : proposeInBlockPlain(table, block, features, neighbours);
}

} // namespace

std::optional<SimilarityMatcher::Candidates>
SimilarityMatcher::candidatePairs(const std::vector<PhotoAsset>& pictures,
                                  const std::vector<std::optional<ImageFeatures>>& features,
                                  const CancellationFlag& cancel) {
    HashTable table(features);
    auto neighbours = timeNeighbours(pictures, features);

    std::vector<int> blocks(HashTable::kBlocks);
    std::iota(blocks.begin(), blocks.end(), 0);
    auto chunks = parallelMap(blocks, cancel, [&](int block) {
        return proposeInBlock(table, block, features, neighbours);
    });
    if (cancel.isCancelled()) {
        return std::nullopt;
    }

    // Gathered into one list of exactly the right size, each block's list
    // released as soon as it is copied: with millions of pairs the lists
    // are most of the memory.
    Candidates candidates;
    std::size_t total = neighbours.size();
    for (const auto& chunk : chunks) {
        if (!chunk) {
            return std::nullopt;
        }
        total += chunk->pairs.size();
    }
    candidates.pairs.reserve(total);
    for (auto& chunk : chunks) {
        if (!chunk) {
            return std::nullopt;
        }
        candidates.proposed += chunk->proposed;
        candidates.pairs.insert(candidates.pairs.end(), chunk->pairs.begin(), chunk->pairs.end());
        std::vector<SimilarPair>().swap(chunk->pairs);
    }
    // Time neighbours that the hashes did not propose.
    std::vector<int> compactOf(features.size(), -1);
    for (std::size_t k = 0; k < table.size(); ++k) {
        compactOf[table.id(static_cast<int>(k))] = static_cast<int>(k);
    }
    for (std::uint64_t key : neighbours) {
        int a = static_cast<int>(key >> 32);
        int b = static_cast<int>(key & 0xFFFFFFFF);
        int ca = compactOf[a];
        int cb = compactOf[b];
        if (ca >= 0 && cb >= 0 && (table.proposes(ca, cb) || table.proposes(cb, ca))) {
            continue;
        }
        candidates.proposed += 1;
        if (auto pair = evaluate(a, b, true, features)) {
            candidates.pairs.push_back(*pair);
        }
    }
    std::ranges::sort(candidates.pairs, [](const SimilarPair& x, const SimilarPair& y) {
        return x.a != y.a ? x.a < y.a : x.b < y.b;
    });
    return candidates;
}

} // namespace brevant
