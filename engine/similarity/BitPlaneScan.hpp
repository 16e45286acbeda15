#pragma once

#include "engine/similarity/HammingScan.hpp"

#include <span>
#include <vector>

namespace brevant {

// HammingScan's kernel for AVX2 processors without a vector population
// count. A block is turned on its side: for 32 entries at a time, one
// 256-bit row per hash bit holds that bit of each entry's eight
// orientations. A probe's distance to all 256 of them is then counted
// with carry-save adders over the rows its own bits pick, about a third of
// the instructions of counting each word with table lookups.
void withinBitPlanes(std::span<const std::uint64_t> probes, const TurnedHashes& block, int limit,
                     std::vector<HammingScan::Hit>& hits);

} // namespace brevant
