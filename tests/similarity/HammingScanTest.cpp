#include "engine/similarity/HammingScan.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <random>

namespace brevant {
namespace {

using Hit = HammingScan::Hit;
using Kernel = HammingScan::Kernel;

// Every probe against every entry, one orientation at a time.
template <std::size_t N>
std::vector<std::pair<int, int>> slowHits(const std::vector<std::uint64_t>& probes,
                                          const std::vector<std::array<std::uint64_t, N>>& entries,
                                          int limit) {
    std::vector<std::pair<int, int>> hits;
    for (int p = 0; p < static_cast<int>(probes.size()); ++p) {
        for (int e = 0; e < static_cast<int>(entries.size()); ++e) {
            bool near = false;
            for (std::uint64_t turned : entries[e]) {
                near = near || std::popcount(probes[p] ^ turned) <= limit;
            }
            if (near) {
                hits.emplace_back(p, e);
            }
        }
    }
    return hits;
}

// Entries near the probes (a few bits off one of their orientations) and
// far from them, in blocks whose sizes are not whole numbers of lanes or
// tiles, with four turns or eight orientations.
template <std::size_t N> void expectEveryKernelAgrees() {
    std::mt19937_64 random(3);
    for (int count : {1, 7, 8, 13, 300, 517}) {
        std::vector<std::uint64_t> probes(40);
        for (auto& probe : probes) {
            probe = random();
        }
        // Probes with no bit, every bit, half and just over half the bits
        // set: the bit-plane kernel counts set or clear bits by that.
        probes[0] = 0;
        probes[1] = ~0ULL;
        probes[2] = 0x00000000FFFFFFFFULL;
        probes[3] = 0x00000001FFFFFFFFULL;
        std::vector<std::array<std::uint64_t, N>> entries(count);
        for (auto& entry : entries) {
            for (auto& turned : entry) {
                turned = random();
            }
            // Half the entries have an orientation 0 to 24 bits from some
            // probe; the last one most often, as no earlier one can hide it.
            if (random() % 2 == 0) {
                std::uint64_t near = probes[random() % probes.size()];
                for (int flips = static_cast<int>(random() % 25); flips > 0; --flips) {
                    near ^= 1ULL << (random() % 64);
                }
                entry[random() % 2 == 0 ? N - 1 : random() % N] = near;
            }
        }
        TurnedHashes block;
        block.assign(std::span<const std::array<std::uint64_t, N>>(entries));
        ASSERT_EQ(block.size(), count);
        ASSERT_EQ(block.orientations(), static_cast<int>(N));
        ASSERT_EQ(block.turn(N - 1)[count - 1], entries.back()[N - 1]);
        for (int limit : {0, 12, 20, 33, 64}) {
            auto expected = slowHits(probes, entries, limit);
            for (Kernel kernel : HammingScan::available()) {
                std::vector<Hit> hits;
                HammingScan::within(probes, block, limit, hits, kernel);
                std::vector<std::pair<int, int>> found;
                found.reserve(hits.size());
                for (const Hit& hit : hits) {
                    found.emplace_back(hit.probe, hit.entry);
                }
                std::ranges::sort(found);
                EXPECT_EQ(found, expected)
                    << HammingScan::name(kernel) << ", " << N << " orientations, " << count
                    << " entries, within " << limit;
            }
        }
    }
}

TEST(HammingScan, EveryKernelFindsWhatCountingBitByBitFinds) {
    expectEveryKernelAgrees<4>();
    expectEveryKernelAgrees<8>();
}

} // namespace
} // namespace brevant
