#include "BitPlaneScan.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <immintrin.h>

namespace brevant {

namespace {

using Hit = HammingScan::Hit;

// Entries in one set of rows: a byte of every row each, one bit per
// orientation.
constexpr int kEntries = 32;
constexpr int kOrientations = 8;
constexpr int kBits = 64;
// The rows of a set: one per hash bit, one of zeros and one of ones, then
// bits 1 to 7 of four numbers per orientation (see Probe).
constexpr int kZeros = kBits;
constexpr int kOnes = kBits + 1;
constexpr int kCounts = kBits + 2;
constexpr int kCountBits = 7;
constexpr int kRows = kCounts + 4 * kCountBits;
// Rows every probe adds up.
constexpr int kInputs = 32;
// Sets scanned by every probe before the next ones are read (24 KB).
constexpr int kTile = 8;

struct alignas(32) Row {
    std::array<std::uint8_t, kEntries> bytes;
};

// An 8×8 bit matrix, row r in byte r, transposed: bit c of byte r moves to
// bit r of byte c.
std::uint64_t transpose8(std::uint64_t x) {
    std::uint64_t t = (x ^ (x >> 7)) & 0x00AA00AA00AA00AAULL;
    x ^= t ^ (t << 7);
    t = (x ^ (x >> 14)) & 0x0000CCCC0000CCCCULL;
    x ^= t ^ (t << 14);
    t = (x ^ (x >> 28)) & 0x00000000F0F0F0F0ULL;
    x ^= t ^ (t << 28);
    return x;
}

// The count a probe's sum is added to (see Probe), for a probe of few or
// many set bits and an even or odd number of rows picked.
[[gnu::target("popcnt")]] unsigned countOf(std::uint64_t hash, bool few, int odd, int limit) {
    int clear = kBits + 1 - std::popcount(hash) - odd;
    return static_cast<unsigned>(clear + (few ? 31 + limit : 94 - limit));
}

// The block on its side, kRows rows for every 32 entries. A block of four
// turns repeats them in the mirrored places, which finds the same hits.
[[gnu::target("popcnt")]] std::vector<Row> rowsOf(const TurnedHashes& block, int limit) {
    int count = block.size();
    int sets = (count + kEntries - 1) / kEntries;
    std::vector<Row> rows(static_cast<std::size_t>(sets) * kRows, Row{});
    for (int e = 0; e < count; ++e) {
        Row* set = rows.data() + static_cast<std::ptrdiff_t>(e / kEntries) * kRows;
        int lane = e % kEntries;
        std::array<std::uint64_t, kOrientations> hashes{};
        for (int o = 0; o < kOrientations; ++o) {
            hashes[o] = block.turn(o % block.orientations())[e];
        }
        for (int q = 0; q < kBits / 8; ++q) {
            std::uint64_t bytes = 0;
            for (int o = 0; o < kOrientations; ++o) {
                bytes |= ((hashes[o] >> (8 * q)) & 0xFF) << (8 * o);
            }
            std::uint64_t bits = transpose8(bytes);
            for (int b = 0; b < 8; ++b) {
                set[8 * q + b].bytes[lane] = static_cast<std::uint8_t>(bits >> (8 * b));
            }
        }
        set[kOnes].bytes[lane] = 0xFF;
        for (int group = 0; group < 4; ++group) {
            std::uint64_t counts = 0;
            for (int o = 0; o < kOrientations; ++o) {
                counts |= std::uint64_t{countOf(hashes[o], group < 2, group % 2, limit)} << (8 * o);
            }
            std::uint64_t bits = transpose8(counts);
            for (int k = 1; k <= kCountBits; ++k) {
                set[kCounts + group * kCountBits + k - 1].bytes[lane] =
                    static_cast<std::uint8_t>(bits >> (8 * k));
            }
        }
    }
    return rows;
}

// What a probe x adds up. Its distance to an orientation y is
// |x| + |y| - 2·|x & y|, so only the rows of x's set bits need adding;
// when more than half are set, the rows of its clear bits, as
// |x| - |y| + 2·|~x & y|. With n rows picked (n ≤ 32), r rows of ones are
// added so that n + 2r = 32 + (n mod 2); then x is within `limit` bits of
// y exactly when V = 2·sum + 65 - |y| - (n mod 2) is at least 97 - limit
// (few set bits) or at most 33 + limit (many). The count rows hold that
// number moved by what puts the bound at 128, so bit 7 of twice the sum
// plus the count answers, and it depends on the limit alone.
struct Probe {
    int index = 0;
    std::array<std::uint16_t, kInputs> offsets{}; // bytes from the set's first row
    std::uint16_t counts = 0;
};

std::uint16_t offsetOf(int row) {
    return static_cast<std::uint16_t>(row * sizeof(Row));
}

[[gnu::target("popcnt")]] Probe probeOf(int index, std::uint64_t x, bool few) {
    Probe probe;
    probe.index = index;
    std::uint64_t picked = few ? x : ~x;
    int n = std::popcount(picked);
    int odd = n % 2;
    int i = 0;
    for (; picked != 0; picked &= picked - 1) {
        probe.offsets[i++] = offsetOf(std::countr_zero(picked));
    }
    for (int r = (kInputs + odd - n) / 2; r > 0; --r) {
        probe.offsets[i++] = offsetOf(kOnes);
    }
    while (i < kInputs) {
        probe.offsets[i++] = offsetOf(kZeros);
    }
    probe.counts = offsetOf(kCounts + ((few ? 0 : 2) + odd) * kCountBits);
    return probe;
}

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i rowAt(const Row* set,
                                                                 std::uint16_t offset) {
    return _mm256_load_si256(
        reinterpret_cast<const __m256i*>(reinterpret_cast<const char*>(set) + offset));
}

// Adds three bits of every lane: the low bit of the sum and the carry.
[[gnu::target("avx2"), gnu::always_inline]] inline void add3(__m256i& carry, __m256i& sum,
                                                             __m256i a, __m256i b, __m256i c) {
    __m256i half = _mm256_xor_si256(a, b);
    carry = _mm256_or_si256(_mm256_and_si256(a, b), _mm256_and_si256(half, c));
    sum = _mm256_xor_si256(half, c);
}

// Adds eight rows into the running ones, twos and fours and returns what
// carries into the eights.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i
add8(const Row* set, const std::uint16_t* offsets, __m256i& ones, __m256i& twos, __m256i& fours) {
    __m256i twosA;
    __m256i twosB;
    __m256i foursA;
    __m256i foursB;
    __m256i eights;
    add3(twosA, ones, ones, rowAt(set, offsets[0]), rowAt(set, offsets[1]));
    add3(twosB, ones, ones, rowAt(set, offsets[2]), rowAt(set, offsets[3]));
    add3(foursA, twos, twos, twosA, twosB);
    add3(twosA, ones, ones, rowAt(set, offsets[4]), rowAt(set, offsets[5]));
    add3(twosB, ones, ones, rowAt(set, offsets[6]), rowAt(set, offsets[7]));
    add3(foursB, twos, twos, twosA, twosB);
    add3(eights, fours, fours, foursA, foursB);
    return eights;
}

// Adds sixteen rows into the running ones, twos, fours and eights (the
// Harley–Seal tree) and returns what carries into the sixteens.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i add16(const Row* set,
                                                                 const std::uint16_t* offsets,
                                                                 __m256i& ones, __m256i& twos,
                                                                 __m256i& fours, __m256i& eights) {
    __m256i eightsA = add8(set, offsets, ones, twos, fours);
    __m256i eightsB = add8(set, offsets + 8, ones, twos, fours);
    __m256i sixteens;
    add3(sixteens, eights, eights, eightsA, eightsB);
    return sixteens;
}

// Lanes where twice the probe's sum plus its count row reaches 128.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i reaching(const Row* set,
                                                                    const Probe& probe) {
    __m256i zero = _mm256_setzero_si256();
    __m256i ones = zero;
    __m256i twos = zero;
    __m256i fours = zero;
    __m256i eights = zero;
    __m256i low = add16(set, probe.offsets.data(), ones, twos, fours, eights);
    __m256i high = add16(set, probe.offsets.data() + 16, ones, twos, fours, eights);
    __m256i sum[6] = {
        ones, twos, fours, eights, _mm256_xor_si256(low, high), _mm256_and_si256(low, high)};
    // Only the carries matter: bit k of twice the sum is bit k - 1 of it.
    __m256i carry = _mm256_and_si256(sum[0], rowAt(set, probe.counts));
#pragma GCC unroll 8
    for (int k = 2; k < kCountBits; ++k) {
        __m256i a = sum[k - 1];
        __m256i b = rowAt(set, probe.counts + offsetOf(k - 1));
        carry = _mm256_or_si256(_mm256_and_si256(a, b),
                                _mm256_and_si256(_mm256_xor_si256(a, b), carry));
    }
    return _mm256_xor_si256(rowAt(set, probe.counts + offsetOf(kCountBits - 1)), carry);
}

// Entries of the set with an orientation the probe is near: for a probe of
// few set bits, a byte with a lane reaching 128; otherwise a byte with a
// lane below it.
template <bool kFew>
[[gnu::target("avx2"), gnu::always_inline]] inline unsigned nearEntries(const Row* set,
                                                                        const Probe& probe) {
    __m256i reached = reaching(set, probe);
    __m256i none = kFew ? _mm256_setzero_si256() : _mm256_cmpeq_epi8(reached, reached);
    auto far = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(reached, none)));
    return ~far;
}

template <bool kFew>
[[gnu::target("avx2")]] void scanTile(const std::vector<Row>& rows, int first, int last, int count,
                                      const std::vector<Probe>& probes, std::vector<Hit>& hits) {
    for (const Probe& probe : probes) {
        for (int s = first; s < last; ++s) {
            unsigned near =
                nearEntries<kFew>(rows.data() + static_cast<std::ptrdiff_t>(s) * kRows, probe);
            int entry = s * kEntries;
            if (count - entry < kEntries) {
                near &= (1U << (count - entry)) - 1;
            }
            for (; near != 0; near &= near - 1) {
                hits.push_back({probe.index, entry + std::countr_zero(near)});
            }
        }
    }
}

} // namespace

[[gnu::target("popcnt")]] void withinBitPlanes(std::span<const std::uint64_t> probes,
                                               const TurnedHashes& block, int limit,
                                               std::vector<Hit>& hits) {
    if (limit < 0 || block.size() == 0) {
        return;
    }
    limit = std::min(limit, kBits);
    std::vector<Row> rows = rowsOf(block, limit);
    std::vector<Probe> few;
    std::vector<Probe> many;
    for (int i = 0; i < static_cast<int>(probes.size()); ++i) {
        bool isFew = std::popcount(probes[i]) <= kBits / 2;
        (isFew ? few : many).push_back(probeOf(i, probes[i], isFew));
    }
    int sets = static_cast<int>(rows.size()) / kRows;
    for (int first = 0; first < sets; first += kTile) {
        int last = std::min(sets, first + kTile);
        scanTile<true>(rows, first, last, block.size(), few, hits);
        scanTile<false>(rows, first, last, block.size(), many, hits);
    }
}

} // namespace brevant
