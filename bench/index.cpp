// Times building the similarity index (measuring excluded) over synthetic
// feature sets.
//
//   bench_index [--pictures N] [--kind uniform|clustered] [--seed S]
//
// uniform: every picture's four turned hashes are independent random words.
// clustered: pictures come in clusters of near-copies (1 to 8 copies of one
// random photo, each hash with up to 10 flipped bits), as a library with many
// re-saved and resized copies would have. Folders of 200 pictures, capture
// dates a few seconds apart so time neighbours are proposed as well.
#include "engine/similarity/SimilarityMatcher.hpp"

#include <chrono>
#include <cstdlib>
#include <fmt/format.h>
#include <random>
#include <string>
#include <sys/resource.h>

namespace {

using brevant::ImageFeatures;

long maxResidentMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

ImageFeatures featuresFrom(const std::array<std::uint64_t, 4>& turns, std::mt19937_64& random) {
    ImageFeatures f;
    f.hashes = {turns[0], turns[1], turns[2], turns[3]};
    for (std::uint64_t h : turns) {
        f.detailHashes.push_back({h, random(), random(), random()});
    }
    f.pixelWidth = 4032;
    f.pixelHeight = 3024;
    return f;
}

} // namespace

int main(int argc, char** argv) {
    int count = 100'000;
    std::string kind = "uniform";
    unsigned seed = 1;
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string flag = argv[i];
        if (flag == "--pictures") {
            count = std::atoi(argv[i + 1]);
        } else if (flag == "--kind") {
            kind = argv[i + 1];
        } else if (flag == "--seed") {
            seed = static_cast<unsigned>(std::atoi(argv[i + 1]));
        }
    }
    std::mt19937_64 random(seed);
    std::vector<brevant::PhotoAsset> pictures(count);
    std::vector<std::optional<ImageFeatures>> features(count);
    std::array<std::uint64_t, 4> centre{};
    int left = 0;
    for (int i = 0; i < count; ++i) {
        pictures[i].path = fmt::format("/library/{:05}/IMG_{:07}.JPG", i / 200, i);
        pictures[i].snapshot.size = 3'000'000 + static_cast<std::int64_t>(random() % 1'000'000);
        std::array<std::uint64_t, 4> turns = {random(), random(), random(), random()};
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
        ImageFeatures f = featuresFrom(turns, random);
        f.captureDate = brevant::Date{700'000'000.0 + i * 7.0};
        features[i] = std::move(f);
    }
    long before = maxResidentMegabytes();

    brevant::CancellationFlag cancel;
    auto start = std::chrono::steady_clock::now();
    auto index =
        brevant::SimilarityMatcher::index(std::move(pictures), std::move(features), {}, cancel);
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!index) {
        return 1;
    }
    auto groupStart = std::chrono::steady_clock::now();
    auto groups = index->groups(brevant::SimilarityPreset::balanced);
    auto series = index->series(3.0, 34.0);
    double groupSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - groupStart).count();
    fmt::print("{} {} pictures: index {:.2f} s, {} candidates proposed, {} pairs kept; "
               "balanced groups {}, series {} in {:.2f} s; peak memory {} MB "
               "({} MB before indexing)\n",
               kind, count, seconds, index->candidatesProposed, index->pairs.size(), groups.size(),
               series.size(), groupSeconds, maxResidentMegabytes(), before);
    return 0;
}
