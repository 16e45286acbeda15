// Candidate pairs of the similarity matcher: proposed cheaply from shared
// hash bytes and capture times, each evaluated once, and kept only when
// some preset or series can use them.
#include "engine/similarity/CaptureTimeline.hpp"
#include "engine/similarity/FeatureExtractor.hpp"
#include "engine/similarity/HammingScan.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"
#include "engine/similarity/SimilarityThresholds.hpp"
#include "engine/support/ParallelMap.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace brevant {

namespace {

constexpr int kBytes = 8;
constexpr int kTurns = ImageFeatures::kTurns;
constexpr int kOrientations = ImageFeatures::kOrientations;
constexpr int kValues = 256;
constexpr int kProposed = SimilarityThresholds::kCandidateHamming;
constexpr int kKept = SimilarityThresholds::kKeptHamming;
constexpr int kSeries = static_cast<int>(SimilarityThresholds::kSeriesRelated);

// A picture's hashes in the eight orientations ImageFeatures lists. A
// record measured without mirrors repeats its four turns in the mirrored
// places: every rule below then answers exactly as over the four turns.
using Turns = std::array<std::uint64_t, kOrientations>;

int byteAt(std::uint64_t hash, int position) {
    return static_cast<int>((hash >> (8 * position)) & 0xFF);
}

// The top bit of every byte in which a and b agree.
std::uint64_t equalBytes(std::uint64_t a, std::uint64_t b) {
    constexpr std::uint64_t kLow = 0x7F7F7F7F7F7F7F7FULL;
    std::uint64_t x = a ^ b;
    // The top bit of a byte ends up set exactly when the byte is not zero;
    // no carry crosses into the next byte.
    std::uint64_t nonZero = ((x & kLow) + kLow) | x;
    return ~nonZero & ~kLow;
}

// Smallest distance of a hash to any orientation.
int distance(std::uint64_t hash, const Turns& turns) {
    int best = std::popcount(hash ^ turns[0]);
    for (int o = 1; o < kOrientations; ++o) {
        best = std::min(best, std::popcount(hash ^ turns[o]));
    }
    return best;
}

// Some orientation of x shares a byte position with y's unturned hash, and
// x's unturned hash is close enough to one of y's orientations.
bool proposes(const Turns& x, const Turns& y) {
    std::uint64_t shared = 0;
    for (std::uint64_t turned : x) {
        shared |= equalBytes(turned, y[0]);
    }
    return shared != 0 && distance(x[0], y) <= kProposed;
}

// Some orientation of x before `turn`, or `turn` itself at a position
// before `position`, shares that byte with `target`: probing goes
// orientation by orientation, position by position within one.
bool sharedEarlier(const Turns& x, std::uint64_t target, int turn, int position) {
    for (int t = 0; t < turn; ++t) {
        if (equalBytes(x[t], target) != 0) {
            return true;
        }
    }
    std::uint64_t before = position == 0 ? 0 : ~0ULL >> (8 * (kBytes - position));
    return (equalBytes(x[turn], target) & before) != 0;
}

// Where and when a picture was taken, to tell time neighbours without a
// lookup per pair.
struct Place {
    int folder = -1; // -1: no capture date, never anyone's neighbour
    double seconds = 0;
};

// The measured pictures' hashes under compact indices (k stands for picture
// ids()[k]; ids ascend), and for one byte position at a time the pictures
// listed under each byte value of their unturned hash and the probes
// (picture, orientation) whose hash in that orientation has that value
// there. Only measured orientations are probes.
class ProposalTable {
public:
    struct Position {
        std::array<int, kValues + 1> listingStart{};
        std::vector<int> listings;
        std::array<int, kValues + 1> probeStart{};
        std::vector<int> probes; // k * kOrientations + orientation
    };

    ProposalTable(const std::vector<std::optional<ImageFeatures>>& features,
                  const std::map<std::string, std::vector<DatedPicture>>& captures) {
        std::vector<Place> placeOf(features.size());
        int folder = 0;
        for (const auto& [name, dated] : captures) {
            for (const DatedPicture& picture : dated) {
                placeOf[picture.index] = {folder, picture.seconds};
            }
            folder += 1;
        }
        compactOf_.assign(features.size(), -1);
        for (std::size_t i = 0; i < features.size(); ++i) {
            const auto& f = features[i];
            // Records that hold neither the four turns nor all eight
            // orientations cannot be probed.
            if (!f) {
                continue;
            }
            int count = static_cast<int>(f->hashes.size());
            if (count != kTurns && count != kOrientations) {
                continue;
            }
            compactOf_[i] = static_cast<int>(ids_.size());
            ids_.push_back(static_cast<int>(i));
            Turns turns{};
            for (int o = 0; o < kOrientations; ++o) {
                turns[o] = f->hashes[count == kOrientations ? o : o % kTurns];
            }
            turns_.push_back(turns);
            measured_.push_back(count);
            places_.push_back(placeOf[i]);
        }
    }

    [[nodiscard]] int size() const { return static_cast<int>(ids_.size()); }

    [[nodiscard]] int id(int k) const { return ids_[k]; }

    [[nodiscard]] const Turns& turns(int k) const { return turns_[k]; }

    [[nodiscard]] int compactOf(int picture) const { return compactOf_[picture]; }

    [[nodiscard]] const Place& place(int k) const { return places_[k]; }

    // Whether k's mirrored orientations were measured.
    [[nodiscard]] bool mirrored(int k) const { return measured_[k] == kOrientations; }

    // Counting sorts of the listings and probes at byte position p.
    [[nodiscard]] Position position(int p) const {
        Position result;
        std::size_t probes = 0;
        for (int k = 0; k < size(); ++k) {
            result.listingStart[byteAt(turns_[k][0], p) + 1] += 1;
            for (int o = 0; o < measured_[k]; ++o) {
                result.probeStart[byteAt(turns_[k][o], p) + 1] += 1;
            }
            probes += static_cast<std::size_t>(measured_[k]);
        }
        std::partial_sum(result.listingStart.begin(), result.listingStart.end(),
                         result.listingStart.begin());
        std::partial_sum(result.probeStart.begin(), result.probeStart.end(),
                         result.probeStart.begin());
        result.listings.resize(turns_.size());
        result.probes.resize(probes);
        auto nextListing = result.listingStart;
        auto nextProbe = result.probeStart;
        for (int k = 0; k < size(); ++k) {
            result.listings[nextListing[byteAt(turns_[k][0], p)]++] = k;
            for (int o = 0; o < measured_[k]; ++o) {
                result.probes[nextProbe[byteAt(turns_[k][o], p)]++] = k * kOrientations + o;
            }
        }
        return result;
    }

private:
    std::vector<int> ids_;
    std::vector<int> compactOf_;
    std::vector<Turns> turns_;
    std::vector<int> measured_; // orientations measured: 4 or 8
    std::vector<Place> places_;
};

// a's unturned hash against b's orientations, as FeatureExtractor::hashMatch
// answers it, from the compact copies (repeated turns never come first).
FeatureExtractor::HashMatch hashMatch(const Turns& a, const Turns& b) {
    FeatureExtractor::HashMatch best{.distance = std::popcount(a[0] ^ b[0]), .turn = 0};
    for (int turn = 1; turn < kOrientations; ++turn) {
        int d = std::popcount(a[0] ^ b[turn]);
        if (d < best.distance) {
            best = {.distance = d, .turn = turn};
        }
    }
    return best;
}

// The kept pair of two pictures, a < b, whose hashes match so; nothing
// when either was not measured.
std::optional<SimilarPair> evaluate(int a, int b, FeatureExtractor::HashMatch match,
                                    const std::vector<std::optional<ImageFeatures>>& features) {
    const auto& measuredA = features[a];
    const auto& measuredB = features[b];
    if (!measuredA || !measuredB) {
        return std::nullopt;
    }
    const ImageFeatures& fa = *measuredA;
    const ImageFeatures& fb = *measuredB;
    // Feature prints are not made on this platform, so `vision` stays absent.
    return SimilarPair{.a = a,
                       .b = b,
                       .distance = static_cast<std::uint8_t>(match.distance),
                       .shapesAgree = FeatureExtractor::shapesAgree(fa, fb, match.turn % 2 == 1),
                       .detail =
                           static_cast<std::int16_t>(FeatureExtractor::detailDistance(fa, fb))};
}

struct Found {
    std::vector<SimilarPair> pairs;
    std::int64_t proposed = 0;
};

// A block: the pictures listed under one byte value at one position, and
// the probes whose turned hash has that value there, with copies of what
// deciding on a hit needs, so that it reads nothing from far away.
struct Block {
    int position = 0;
    std::span<const int> listed;
    std::span<const int> probes; // k * kOrientations + orientation
    std::vector<Turns> listedTurns;
    std::vector<Place> listedPlaces;
    std::vector<Turns> probeTurns;
    std::vector<Place> probePlaces;
    std::vector<HammingScan::Hit> hits;
};

// Taken in one folder at most a minute apart, as the time-neighbour pass
// finds them.
bool neighbours(const Place& x, const Place& y) {
    if (x.folder < 0 || x.folder != y.folder) {
        return false;
    }
    double later = std::max(x.seconds, y.seconds);
    double earlier = std::min(x.seconds, y.seconds);
    return later - earlier <= SimilarityThresholds::kTimeNeighbourSeconds;
}

// Turns the block's hits into proposals. Every proposed pair is met in
// exactly one block from exactly one side: where the proposing picture's
// first shared (turn, position) lies, and from the smaller picture when
// both propose. Time neighbours are only counted here; their own pass keeps
// them.
[[gnu::always_inline]] inline Found
takeHits(const Block& block, const ProposalTable& table,
         const std::vector<std::optional<ImageFeatures>>& features) {
    Found found;
    for (const auto& hit : block.hits) {
        int x = block.probes[hit.probe] / kOrientations;
        int y = block.listed[hit.entry];
        if (x == y) {
            continue;
        }
        int turn = block.probes[hit.probe] % kOrientations;
        const Turns& tx = block.probeTurns[hit.probe];
        const Turns& ty = block.listedTurns[hit.entry];
        if (sharedEarlier(tx, ty[0], turn, block.position) || (y < x && proposes(ty, tx))) {
            continue; // met at an earlier probe, or from y's side
        }
        found.proposed += 1;
        const Place& px = block.probePlaces[hit.probe];
        const Place& py = block.listedPlaces[hit.entry];
        if (neighbours(px, py)) {
            continue;
        }
        // Compact order is picture order.
        const Turns& ta = x < y ? tx : ty;
        const Turns& tb = x < y ? ty : tx;
        // A pair of one folder's dated pictures can still widen a series'
        // spread, so it is kept as far as any proposal reaches.
        int bound = px.folder >= 0 && px.folder == py.folder ? kProposed : kKept;
        auto match = hashMatch(ta, tb);
        if (match.distance > bound) {
            continue;
        }
        if (auto pair =
                evaluate(table.id(std::min(x, y)), table.id(std::max(x, y)), match, features)) {
            found.pairs.push_back(*pair);
        }
    }
    // Only the kept pairs stay: blocks hold millions between them.
    found.pairs.shrink_to_fit();
    return found;
}

// Built twice: with the population-count instruction, and plainly for
// processors without one.
[[gnu::target("popcnt"), gnu::flatten]] Found
takeHitsWithPopcount(const Block& block, const ProposalTable& table,
                     const std::vector<std::optional<ImageFeatures>>& features) {
    return takeHits(block, table, features);
}

[[gnu::flatten]] Found takeHitsPlain(const Block& block, const ProposalTable& table,
                                     const std::vector<std::optional<ImageFeatures>>& features) {
    return takeHits(block, table, features);
}

// The block's hits: probes within the proposal distance of an entry's
// orientations. A block without mirrored entries is scanned over the four
// turns alone, exactly as before mirrors were measured.
void scanBlock(Block& block, std::span<const std::uint64_t> unturned, const ProposalTable& table,
               HammingScan::Kernel kernel) {
    TurnedHashes hashes;
    if (std::ranges::any_of(block.listed, [&](int k) { return table.mirrored(k); })) {
        hashes.assign(std::span<const Turns>(block.listedTurns));
    } else {
        std::vector<TurnedHashes::Turns> turns;
        turns.reserve(block.listedTurns.size());
        for (const Turns& t : block.listedTurns) {
            turns.push_back({t[0], t[1], t[2], t[3]});
        }
        hashes.assign(turns);
    }
    HammingScan::within(unturned, hashes, kProposed, block.hits, kernel);
}

// The pairs first met in block (p, v).
Found proposeInBlock(const ProposalTable& table, const ProposalTable::Position& at, int p, int v,
                     const std::vector<std::optional<ImageFeatures>>& features,
                     HammingScan::Kernel kernel) {
    Block block;
    block.position = p;
    block.listed = {at.listings.data() + at.listingStart[v],
                    at.listings.data() + at.listingStart[v + 1]};
    block.probes = {at.probes.data() + at.probeStart[v], at.probes.data() + at.probeStart[v + 1]};
    if (block.listed.empty() || block.probes.empty()) {
        return {};
    }
    block.listedTurns.reserve(block.listed.size());
    block.listedPlaces.reserve(block.listed.size());
    block.probeTurns.reserve(block.probes.size());
    block.probePlaces.reserve(block.probes.size());
    for (int k : block.listed) {
        block.listedTurns.push_back(table.turns(k));
        block.listedPlaces.push_back(table.place(k));
    }
    std::vector<std::uint64_t> unturned;
    unturned.reserve(block.probes.size());
    for (int probe : block.probes) {
        const Turns& turns = table.turns(probe / kOrientations);
        block.probeTurns.push_back(turns);
        block.probePlaces.push_back(table.place(probe / kOrientations));
        unturned.push_back(turns[0]);
    }
    scanBlock(block, unturned, table, kernel);
    return kernel == HammingScan::Kernel::portable ? takeHitsPlain(block, table, features)
                                                   : takeHitsWithPopcount(block, table, features);
}

// The time neighbours of one folder: every pair of its dated pictures
// taken at most a minute apart, kept up to the series' distance. Counted as
// proposed only when the hashes did not propose them already.
Found timeNeighbours(const std::vector<DatedPicture>& dated, const ProposalTable& table,
                     const std::vector<std::optional<ImageFeatures>>& features) {
    Found found;
    for (std::size_t i = 0; i < dated.size(); ++i) {
        for (std::size_t j = i + 1; j < dated.size(); ++j) {
            if (dated[j].seconds - dated[i].seconds > SimilarityThresholds::kTimeNeighbourSeconds) {
                break;
            }
            int a = std::min(dated[i].index, dated[j].index);
            int b = std::max(dated[i].index, dated[j].index);
            int ca = table.compactOf(a);
            int cb = table.compactOf(b);
            const auto& fa = features[a];
            const auto& fb = features[b];
            if (!fa || !fb) {
                continue; // dated pictures are measured
            }
            bool compact = ca >= 0 && cb >= 0;
            bool hashed = compact && (proposes(table.turns(ca), table.turns(cb)) ||
                                      proposes(table.turns(cb), table.turns(ca)));
            found.proposed += hashed ? 0 : 1;
            auto match = compact ? hashMatch(table.turns(ca), table.turns(cb))
                                 : FeatureExtractor::hashMatch(*fa, *fb);
            if (match.distance > kSeries) {
                continue;
            }
            if (auto pair = evaluate(a, b, match, features)) {
                found.pairs.push_back(*pair);
            }
        }
    }
    return found;
}

// Kept pairs gathered in chunks big enough to go straight back to the
// system when freed, so copying them into one list at the end needs little
// more than the list itself.
class PairChunks {
public:
    void add(std::vector<SimilarPair>&& pairs) {
        std::span<const SimilarPair> rest(pairs);
        while (!rest.empty()) {
            if (chunks_.empty() || chunks_.back().size() == chunks_.back().capacity()) {
                chunks_.emplace_back().reserve(kChunk);
            }
            auto& chunk = chunks_.back();
            std::size_t taken = std::min(rest.size(), chunk.capacity() - chunk.size());
            chunk.insert(chunk.end(), rest.begin(), rest.begin() + static_cast<long>(taken));
            rest = rest.subspan(taken);
        }
        std::vector<SimilarPair>().swap(pairs);
    }

    [[nodiscard]] std::vector<SimilarPair> take() {
        std::size_t total = 0;
        for (const auto& chunk : chunks_) {
            total += chunk.size();
        }
        std::vector<SimilarPair> all;
        all.reserve(total);
        for (auto& chunk : chunks_) {
            all.insert(all.end(), chunk.begin(), chunk.end());
            std::vector<SimilarPair>().swap(chunk);
        }
        chunks_.clear();
        return all;
    }

private:
    // 64 MB: above the size from which allocations are mapped on their own.
    static constexpr std::size_t kChunk = (64U << 20) / sizeof(SimilarPair);
    std::vector<std::vector<SimilarPair>> chunks_;
};

// Every kept pair in chunks, and the count of proposals; nullopt when
// cancelled.
std::optional<PairChunks> keptPairs(const std::vector<PhotoAsset>& pictures,
                                    const std::vector<std::optional<ImageFeatures>>& features,
                                    const CancellationFlag& cancel, std::int64_t& proposed) {
    auto captures = capturesByFolder(pictures, features);
    ProposalTable table(features, captures);
    HammingScan::Kernel kernel = HammingScan::best();

    PairChunks kept;
    // Adds what a parallel pass found; false when it was cancelled.
    auto gather = [&](std::vector<std::optional<Found>>& found) {
        if (cancel.isCancelled()) {
            return false;
        }
        for (auto& part : found) {
            if (!part) {
                return false;
            }
            proposed += part->proposed;
            kept.add(std::move(part->pairs));
        }
        return true;
    };

    std::vector<int> values(kValues);
    std::iota(values.begin(), values.end(), 0);
    // One byte position at a time keeps the listings small. A small
    // library is done on this thread: starting workers would cost more.
    constexpr int kSmall = 4096;
    for (int p = 0; p < kBytes; ++p) {
        ProposalTable::Position at = table.position(p);
        auto block = [&](int v) { return proposeInBlock(table, at, p, v, features, kernel); };
        std::vector<std::optional<Found>> blocks;
        if (table.size() < kSmall) {
            for (int v : values) {
                blocks.emplace_back(block(v));
            }
        } else {
            blocks = parallelMap(values, cancel, block);
        }
        if (!gather(blocks)) {
            return std::nullopt;
        }
    }

    std::vector<const std::vector<DatedPicture>*> folders;
    folders.reserve(captures.size());
    for (const auto& [folder, dated] : captures) {
        folders.push_back(&dated);
    }
    // A few hundred folders at a time, so that their pairs move into the
    // chunks before the next ones are found.
    constexpr std::size_t kFolders = 256;
    for (std::size_t start = 0; start < folders.size(); start += kFolders) {
        std::vector<const std::vector<DatedPicture>*> some(
            folders.begin() + static_cast<std::ptrdiff_t>(start),
            folders.begin() +
                static_cast<std::ptrdiff_t>(std::min(folders.size(), start + kFolders)));
        auto found = parallelMap(some, cancel, [&](const std::vector<DatedPicture>* dated) {
            return timeNeighbours(*dated, table, features);
        });
        if (!gather(found)) {
            return std::nullopt;
        }
    }
    return kept;
}

} // namespace

std::optional<SimilarityMatcher::Candidates>
SimilarityMatcher::candidatePairs(const std::vector<PhotoAsset>& pictures,
                                  const std::vector<std::optional<ImageFeatures>>& features,
                                  const CancellationFlag& cancel) {
    Candidates candidates;
    auto kept = keptPairs(pictures, features, cancel, candidates.proposed);
    if (!kept) {
        return std::nullopt;
    }
    candidates.pairs = kept->take();
    std::ranges::sort(candidates.pairs, [](const SimilarPair& x, const SimilarPair& y) {
        return x.a != y.a ? x.a < y.a : x.b < y.b;
    });
    return candidates;
}

} // namespace brevant
