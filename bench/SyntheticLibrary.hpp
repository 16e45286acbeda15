#pragma once

// Synthetic measured libraries for the index benchmarks: no files, only
// the features the index reads.
//
// uniform: every picture's hashes, one per orientation (eight, as pictures
// are measured now, or four, as older records hold), are independent random
// words.
// clustered: pictures come in clusters of near-copies (1 to 8 copies of one
// random photo, each hash with up to 10 flipped bits), as a library with many
// re-saved and resized copies would have. Folders of 200 pictures, capture
// dates 7 s apart so time neighbours are proposed as well.

#include "engine/scan/PhotoAsset.hpp"
#include "engine/similarity/ImageFeatures.hpp"

#include <fmt/format.h>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace bench {

struct SyntheticLibrary {
    std::vector<brevant::PhotoAsset> pictures;
    std::vector<std::optional<brevant::ImageFeatures>> features;
};

using Orientations = std::vector<std::uint64_t>;

inline brevant::ImageFeatures featuresFrom(const Orientations& turns, std::mt19937_64& random) {
    brevant::ImageFeatures f;
    f.hashes = turns;
    for (std::uint64_t h : turns) {
        f.detailHashes.push_back({h, random(), random(), random()});
    }
    f.pixelWidth = 4032;
    f.pixelHeight = 3024;
    return f;
}

inline SyntheticLibrary syntheticLibrary(int count, const std::string& kind, unsigned seed,
                                         int orientations = brevant::ImageFeatures::kOrientations) {
    std::mt19937_64 random(seed);
    SyntheticLibrary library;
    library.pictures.resize(count);
    library.features.resize(count);
    Orientations centre;
    int left = 0;
    for (int i = 0; i < count; ++i) {
        auto& picture = library.pictures[i];
        picture.path = fmt::format("/library/{:05}/IMG_{:07}.JPG", i / 200, i);
        picture.snapshot.size = 3'000'000 + static_cast<std::int64_t>(random() % 1'000'000);
        Orientations turns(static_cast<std::size_t>(orientations));
        for (auto& h : turns) {
            h = random();
        }
        if (kind == "clustered") {
            if (left == 0) {
                centre = turns;
                left = 1 + static_cast<int>(random() % 8);
            }
            left -= 1;
            turns = centre;
            for (auto& h : turns) {
                for (int flips = static_cast<int>(random() % 11); flips > 0; --flips) {
                    h ^= 1ULL << (random() % 64);
                }
            }
        }
        brevant::ImageFeatures f = featuresFrom(turns, random);
        f.captureDate = brevant::Date{700'000'000.0 + i * 7.0};
        library.features[i] = std::move(f);
    }
    return library;
}

} // namespace bench
