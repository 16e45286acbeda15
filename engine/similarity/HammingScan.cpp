#include "HammingScan.hpp"

#include <algorithm>
#include <bit>
#include <immintrin.h>
#include <ostream>

namespace brevant {

namespace {

// The widest kernel reads eight words at a time.
constexpr int kLanes = 8;
// Entries scanned by every probe before the next ones are read: four turns
// of 256 words stay in the first-level cache.
constexpr int kTile = 256;

using Hit = HammingScan::Hit;

// Keeps the hits of `mask` (one bit per lane, from `entry` on) that fall
// inside the block.
[[gnu::always_inline]] inline void addHits(unsigned mask, int probe, int entry, int count,
                                           std::vector<Hit>& hits) {
    if (entry + kLanes > count) {
        mask &= (1U << (count - entry)) - 1;
    }
    while (mask != 0) {
        hits.push_back({probe, entry + std::countr_zero(mask)});
        mask &= mask - 1;
    }
}

[[gnu::always_inline]] inline void withinScalar(std::span<const std::uint64_t> probes,
                                                const TurnedHashes& block, int limit,
                                                std::vector<Hit>& hits) {
    const std::uint64_t* t0 = block.turn(0);
    const std::uint64_t* t1 = block.turn(1);
    const std::uint64_t* t2 = block.turn(2);
    const std::uint64_t* t3 = block.turn(3);
    int count = block.size();
    for (int start = 0; start < count; start += kTile) {
        int end = std::min(count, start + kTile);
        for (int probe = 0; probe < static_cast<int>(probes.size()); ++probe) {
            std::uint64_t x = probes[probe];
            for (int e = start; e < end; ++e) {
                int d = std::min(std::min(std::popcount(x ^ t0[e]), std::popcount(x ^ t1[e])),
                                 std::min(std::popcount(x ^ t2[e]), std::popcount(x ^ t3[e])));
                if (d <= limit) {
                    hits.push_back({probe, e});
                }
            }
        }
    }
}

void withinPortable(std::span<const std::uint64_t> probes, const TurnedHashes& block, int limit,
                    std::vector<Hit>& hits) {
    withinScalar(probes, block, limit, hits);
}

[[gnu::target("popcnt")]] void withinPopcount(std::span<const std::uint64_t> probes,
                                              const TurnedHashes& block, int limit,
                                              std::vector<Hit>& hits) {
    withinScalar(probes, block, limit, hits);
}

// Bits set in each 64-bit lane, by looking up each half byte in a table of
// sixteen counts.
[[gnu::target("popcnt,avx2"), gnu::always_inline]] inline __m256i popcount4(__m256i v) {
    const __m256i table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4, 0, 1, 1,
                                           2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
    const __m256i nibble = _mm256_set1_epi8(0x0F);
    __m256i low = _mm256_and_si256(v, nibble);
    __m256i high = _mm256_and_si256(_mm256_srli_epi16(v, 4), nibble);
    __m256i bytes =
        _mm256_add_epi8(_mm256_shuffle_epi8(table, low), _mm256_shuffle_epi8(table, high));
    return _mm256_sad_epu8(bytes, _mm256_setzero_si256());
}

[[gnu::target("popcnt,avx2"), gnu::always_inline]] inline __m256i
load4(const std::uint64_t* words) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words));
}

[[gnu::target("popcnt,avx2")]] void withinAvx2(std::span<const std::uint64_t> probes,
                                               const TurnedHashes& block, int limit,
                                               std::vector<Hit>& hits) {
    constexpr int kWords = 4;
    const auto* t0 = block.turn(0);
    const auto* t1 = block.turn(1);
    const auto* t2 = block.turn(2);
    const auto* t3 = block.turn(3);
    // Counts are below 65, so the lower halves of the lanes compare alone.
    const __m256i above = _mm256_set1_epi64x(limit + 1);
    int count = block.size();
    for (int start = 0; start < count; start += kTile) {
        int end = std::min(count, start + kTile);
        for (int probe = 0; probe < static_cast<int>(probes.size()); ++probe) {
            __m256i x = _mm256_set1_epi64x(static_cast<long long>(probes[probe]));
            for (int e = start; e < end; e += kLanes) {
                unsigned mask = 0;
                for (int half = 0; half < kLanes; half += kWords) {
                    int at = e + half;
                    __m256i d0 = popcount4(_mm256_xor_si256(x, load4(t0 + at)));
                    __m256i d1 = popcount4(_mm256_xor_si256(x, load4(t1 + at)));
                    __m256i d2 = popcount4(_mm256_xor_si256(x, load4(t2 + at)));
                    __m256i d3 = popcount4(_mm256_xor_si256(x, load4(t3 + at)));
                    __m256i d =
                        _mm256_min_epu32(_mm256_min_epu32(d0, d1), _mm256_min_epu32(d2, d3));
                    __m256i near = _mm256_cmpgt_epi64(above, d);
                    auto lanes =
                        static_cast<unsigned>(_mm256_movemask_pd(_mm256_castsi256_pd(near)));
                    mask |= lanes << half;
                }
                if (mask != 0) {
                    addHits(mask, probe, e, count, hits);
                }
            }
        }
    }
}

// The plain minimum leaves its unused source undefined, which GCC 12 warns
// about; the zero-masked form says what the unused lanes are.
[[gnu::target("popcnt,avx2,avx512f,avx512vpopcntdq"), gnu::always_inline]] inline __m512i
min8(__m512i a, __m512i b) {
    return _mm512_maskz_min_epu64(0xFF, a, b);
}

[[gnu::target("popcnt,avx2,avx512f,avx512vpopcntdq")]] void
withinAvx512(std::span<const std::uint64_t> probes, const TurnedHashes& block, int limit,
             std::vector<Hit>& hits) {
    const auto* t0 = block.turn(0);
    const auto* t1 = block.turn(1);
    const auto* t2 = block.turn(2);
    const auto* t3 = block.turn(3);
    const __m512i bound = _mm512_set1_epi64(limit);
    int count = block.size();
    for (int start = 0; start < count; start += kTile) {
        int end = std::min(count, start + kTile);
        for (int probe = 0; probe < static_cast<int>(probes.size()); ++probe) {
            __m512i x = _mm512_set1_epi64(static_cast<long long>(probes[probe]));
            for (int e = start; e < end; e += kLanes) {
                __m512i d0 = _mm512_popcnt_epi64(_mm512_xor_si512(x, _mm512_loadu_si512(t0 + e)));
                __m512i d1 = _mm512_popcnt_epi64(_mm512_xor_si512(x, _mm512_loadu_si512(t1 + e)));
                __m512i d2 = _mm512_popcnt_epi64(_mm512_xor_si512(x, _mm512_loadu_si512(t2 + e)));
                __m512i d3 = _mm512_popcnt_epi64(_mm512_xor_si512(x, _mm512_loadu_si512(t3 + e)));
                __m512i d = min8(min8(d0, d1), min8(d2, d3));
                unsigned mask = _mm512_cmple_epu64_mask(d, bound);
                if (mask != 0) {
                    addHits(mask, probe, e, count, hits);
                }
            }
        }
    }
}

} // namespace

void TurnedHashes::assign(std::span<const Turns> turns) {
    count_ = static_cast<int>(turns.size());
    stride_ = (count_ + kLanes - 1) / kLanes * kLanes;
    words_.assign(static_cast<std::size_t>(stride_) * 4, 0);
    for (int t = 0; t < 4; ++t) {
        std::uint64_t* out = words_.data() + static_cast<std::ptrdiff_t>(t) * stride_;
        for (int i = 0; i < count_; ++i) {
            out[i] = turns[i][t];
        }
    }
}

HammingScan::Kernel HammingScan::best() {
    static const Kernel kernel = [] {
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vpopcntdq")) {
            return Kernel::avx512;
        }
        if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt")) {
            return Kernel::avx2;
        }
        if (__builtin_cpu_supports("popcnt")) {
            return Kernel::popcount;
        }
        return Kernel::portable;
    }();
    return kernel;
}

std::vector<HammingScan::Kernel> HammingScan::available() {
    std::vector<Kernel> kernels = {Kernel::portable};
    for (Kernel kernel : {Kernel::popcount, Kernel::avx2, Kernel::avx512}) {
        if (kernel <= best()) {
            kernels.push_back(kernel);
        }
    }
    return kernels;
}

std::string_view HammingScan::name(Kernel kernel) {
    switch (kernel) {
    case Kernel::portable:
        return "portable";
    case Kernel::popcount:
        return "popcount";
    case Kernel::avx2:
        return "avx2";
    case Kernel::avx512:
        return "avx512";
    }
    return "portable";
}

void HammingScan::within(std::span<const std::uint64_t> probes, const TurnedHashes& block,
                         int limit, std::vector<Hit>& hits, Kernel kernel) {
    switch (kernel) {
    case Kernel::portable:
        withinPortable(probes, block, limit, hits);
        return;
    case Kernel::popcount:
        withinPopcount(probes, block, limit, hits);
        return;
    case Kernel::avx2:
        withinAvx2(probes, block, limit, hits);
        return;
    case Kernel::avx512:
        withinAvx512(probes, block, limit, hits);
        return;
    }
}

void PrintTo(HammingScan::Kernel kernel, std::ostream* os) {
    *os << HammingScan::name(kernel);
}

} // namespace brevant
