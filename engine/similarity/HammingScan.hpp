#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string_view>
#include <vector>

namespace brevant {

// Pictures' hashes in four turns, or in all eight orientations (the turns,
// then each mirrored), laid out orientation by orientation (all first ones,
// then all second ones, ...), so that one instruction reads the same
// orientation of several pictures.
class TurnedHashes {
public:
    using Turns = std::array<std::uint64_t, 4>;
    using Orientations = std::array<std::uint64_t, 8>;

    // Keep the storage, so a worker reuses it block after block.
    void assign(std::span<const Turns> turns);
    void assign(std::span<const Orientations> orientations);

    [[nodiscard]] int size() const { return count_; }

    // 4 or 8.
    [[nodiscard]] int orientations() const { return orientations_; }

    // Rounded up to a whole number of vector lanes; the rest is padding.
    [[nodiscard]] int stride() const { return stride_; }

    [[nodiscard]] const std::uint64_t* turn(int t) const {
        return words_.data() + static_cast<std::ptrdiff_t>(t) * stride_;
    }

private:
    template <std::size_t N> void fill(std::span<const std::array<std::uint64_t, N>> hashes);

    std::vector<std::uint64_t> words_;
    int count_ = 0;
    int orientations_ = 4;
    int stride_ = 0;
};

// Finds, for many hashes at once, the entries of a block with an orientation
// within a number of bits: the innermost loop of proposing candidate pairs,
// run with the widest population count the processor has.
struct HammingScan {
    enum class Kernel {
        portable,  // any processor
        popcount,  // the population-count instruction, one word at a time
        avx2,      // four words at a time, counted by table lookups
        bitPlanes, // AVX2, 256 words at a time, one bit of each per row
        avx512,    // eight words at a time with the vector population count
    };

    struct Hit {
        int probe; // index into the hashes asked about
        int entry; // index into the block
    };

    // The fastest kernel this processor runs.
    [[nodiscard]] static Kernel best();
    // Every kernel this processor runs, the portable one first.
    [[nodiscard]] static std::vector<Kernel> available();
    [[nodiscard]] static std::string_view name(Kernel kernel);

    // Appends one hit for every probe and block entry where the smallest
    // distance from the probe to any of the entry's orientations is at most
    // `limit` bits. Hits come in no particular order.
    static void within(std::span<const std::uint64_t> probes, const TurnedHashes& block, int limit,
                       std::vector<Hit>& hits, Kernel kernel);
};

} // namespace brevant
