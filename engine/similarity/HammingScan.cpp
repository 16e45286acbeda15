#include "HammingScan.hpp"

#include "BitPlaneScan.hpp"

#include <algorithm>
#include <bit>
#include <immintrin.h>
#include <ostream>

namespace brevant {

namespace {

// The widest kernel reads eight words at a time.
constexpr int kLanes = 8;
// Entries scanned by every probe before the next ones are read: eight
// orientations of 256 words stay in the first-level cache.
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

// Where each orientation of a block starts, read once per scan.
template <int N> using Rows = std::array<const std::uint64_t*, N>;

template <int N> Rows<N> rowsOf(const TurnedHashes& block) {
    Rows<N> rows{};
    for (int t = 0; t < N; ++t) {
        rows[t] = block.turn(t);
    }
    return rows;
}

// The smallest distance from x to entry e's N orientations.
template <int N>
[[gnu::always_inline]] inline int nearest(std::uint64_t x, const Rows<N>& rows, int e) {
    int d = std::popcount(x ^ rows[0][e]);
    for (int t = 1; t < N; ++t) {
        d = std::min(d, std::popcount(x ^ rows[t][e]));
    }
    return d;
}

template <int N>
[[gnu::always_inline]] inline void withinScalar(std::span<const std::uint64_t> probes,
                                                const TurnedHashes& block, int limit,
                                                std::vector<Hit>& hits) {
    const Rows<N> rows = rowsOf<N>(block);
    int count = block.size();
    for (int start = 0; start < count; start += kTile) {
        int end = std::min(count, start + kTile);
        for (int probe = 0; probe < static_cast<int>(probes.size()); ++probe) {
            std::uint64_t x = probes[probe];
            for (int e = start; e < end; ++e) {
                if (nearest<N>(x, rows, e) <= limit) {
                    hits.push_back({probe, e});
                }
            }
        }
    }
}

template <int N>
void withinPortable(std::span<const std::uint64_t> probes, const TurnedHashes& block, int limit,
                    std::vector<Hit>& hits) {
    withinScalar<N>(probes, block, limit, hits);
}

template <int N>
[[gnu::target("popcnt")]] void withinPopcount(std::span<const std::uint64_t> probes,
                                              const TurnedHashes& block, int limit,
                                              std::vector<Hit>& hits) {
    withinScalar<N>(probes, block, limit, hits);
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

// The smallest distance from x to four entries' N orientations, from `at`.
template <int N>
[[gnu::target("popcnt,avx2"), gnu::always_inline]] inline __m256i
nearest4(__m256i x, const Rows<N>& rows, int at) {
    __m256i d = popcount4(_mm256_xor_si256(x, load4(rows[0] + at)));
    for (int t = 1; t < N; ++t) {
        // Counts are below 65, so the lower halves of the lanes compare alone.
        d = _mm256_min_epu32(d, popcount4(_mm256_xor_si256(x, load4(rows[t] + at))));
    }
    return d;
}

template <int N>
[[gnu::target("popcnt,avx2")]] void withinAvx2(std::span<const std::uint64_t> probes,
                                               const TurnedHashes& block, int limit,
                                               std::vector<Hit>& hits) {
    constexpr int kWords = 4;
    const __m256i above = _mm256_set1_epi64x(limit + 1);
    const Rows<N> rows = rowsOf<N>(block);
    int count = block.size();
    for (int start = 0; start < count; start += kTile) {
        int end = std::min(count, start + kTile);
        for (int probe = 0; probe < static_cast<int>(probes.size()); ++probe) {
            __m256i x = _mm256_set1_epi64x(static_cast<long long>(probes[probe]));
            for (int e = start; e < end; e += kLanes) {
                unsigned mask = 0;
                for (int half = 0; half < kLanes; half += kWords) {
                    __m256i near = _mm256_cmpgt_epi64(above, nearest4<N>(x, rows, e + half));
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

template <int N>
[[gnu::target("popcnt,avx2,avx512f,avx512vpopcntdq"), gnu::always_inline]] inline __m512i
nearest8(__m512i x, const Rows<N>& rows, int at) {
    __m512i d = _mm512_popcnt_epi64(_mm512_xor_si512(x, _mm512_loadu_si512(rows[0] + at)));
    for (int t = 1; t < N; ++t) {
        d = min8(d, _mm512_popcnt_epi64(_mm512_xor_si512(x, _mm512_loadu_si512(rows[t] + at))));
    }
    return d;
}

template <int N>
[[gnu::target("popcnt,avx2,avx512f,avx512vpopcntdq")]] void
withinAvx512(std::span<const std::uint64_t> probes, const TurnedHashes& block, int limit,
             std::vector<Hit>& hits) {
    const __m512i bound = _mm512_set1_epi64(limit);
    const Rows<N> rows = rowsOf<N>(block);
    int count = block.size();
    for (int start = 0; start < count; start += kTile) {
        int end = std::min(count, start + kTile);
        for (int probe = 0; probe < static_cast<int>(probes.size()); ++probe) {
            __m512i x = _mm512_set1_epi64(static_cast<long long>(probes[probe]));
            for (int e = start; e < end; e += kLanes) {
                unsigned mask = _mm512_cmple_epu64_mask(nearest8<N>(x, rows, e), bound);
                if (mask != 0) {
                    addHits(mask, probe, e, count, hits);
                }
            }
        }
    }
}

template <int N>
void withinKernel(std::span<const std::uint64_t> probes, const TurnedHashes& block, int limit,
                  std::vector<Hit>& hits, HammingScan::Kernel kernel) {
    switch (kernel) {
    case HammingScan::Kernel::portable:
        withinPortable<N>(probes, block, limit, hits);
        return;
    case HammingScan::Kernel::popcount:
        withinPopcount<N>(probes, block, limit, hits);
        return;
    case HammingScan::Kernel::avx2:
        withinAvx2<N>(probes, block, limit, hits);
        return;
    case HammingScan::Kernel::bitPlanes:
        withinBitPlanes(probes, block, limit, hits);
        return;
    case HammingScan::Kernel::avx512:
        withinAvx512<N>(probes, block, limit, hits);
        return;
    }
}

} // namespace

template <std::size_t N>
void TurnedHashes::fill(std::span<const std::array<std::uint64_t, N>> hashes) {
    count_ = static_cast<int>(hashes.size());
    orientations_ = static_cast<int>(N);
    stride_ = (count_ + kLanes - 1) / kLanes * kLanes;
    words_.assign(static_cast<std::size_t>(stride_) * N, 0);
    for (std::size_t t = 0; t < N; ++t) {
        std::uint64_t* out = words_.data() + t * static_cast<std::size_t>(stride_);
        for (int i = 0; i < count_; ++i) {
            out[i] = hashes[i][t];
        }
    }
}

void TurnedHashes::assign(std::span<const Turns> turns) {
    fill(turns);
}

void TurnedHashes::assign(std::span<const Orientations> orientations) {
    fill(orientations);
}

HammingScan::Kernel HammingScan::best() {
    static const Kernel kernel = [] {
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vpopcntdq")) {
            return Kernel::avx512;
        }
        if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt")) {
            return Kernel::bitPlanes;
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
    for (Kernel kernel : {Kernel::popcount, Kernel::avx2, Kernel::bitPlanes, Kernel::avx512}) {
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
    case Kernel::bitPlanes:
        return "avx2 bit planes";
    case Kernel::avx512:
        return "avx512";
    }
    return "portable";
}

void HammingScan::within(std::span<const std::uint64_t> probes, const TurnedHashes& block,
                         int limit, std::vector<Hit>& hits, Kernel kernel) {
    if (block.orientations() == 8) {
        withinKernel<8>(probes, block, limit, hits, kernel);
        return;
    }
    withinKernel<4>(probes, block, limit, hits, kernel);
}

void PrintTo(HammingScan::Kernel kernel, std::ostream* os) {
    *os << HammingScan::name(kernel);
}

} // namespace brevant
