// Counts what the shared-byte rule misses: pairs of pictures whose hashes
// are within 12 or 16 bits but share no byte position under any turn, so
// candidate proposal never compares them. Then times finding every pair
// within 16 bits by comparing all pairs, against proposing by the rule.
//
//   bench_misses [--pictures N] [--kind uniform|clustered] [--seed S]
//   bench_misses --corpus DIR [--cache FILE]
//
// With --corpus the pictures of DIR are scanned and measured (through the
// feature cache FILE when given, so a second run does not decode again).
// When DIR holds the truth.txt of bench_similar_corpus, the missed pairs
// that are versions of one photo are counted too.
#include "bench/SyntheticLibrary.hpp"

#include "engine/scan/ExactMatcher.hpp"
#include "engine/similarity/FeatureCache.hpp"
#include "engine/similarity/HammingScan.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"
#include "engine/support/ParallelMap.hpp"

#include <bit>
#include <chrono>
#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <map>
#include <numeric>
#include <string>
#include <sys/resource.h>

namespace {

using brevant::HammingScan;
using brevant::TurnedHashes;
using Turns = TurnedHashes::Turns;
using Clock = std::chrono::steady_clock;

struct NeverCancelled {
    [[nodiscard]] bool isCancelled() const { return false; }
};

double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Some turn of x shares a byte position with y's unturned hash.
bool sharesByte(const Turns& x, std::uint64_t y) {
    for (std::uint64_t turned : x) {
        for (int p = 0; p < 8; ++p) {
            if (((turned ^ y) >> (8 * p) & 0xFF) == 0) {
                return true;
            }
        }
    }
    return false;
}

struct Counts {
    long within12 = 0;
    long within16 = 0;
    long missed12 = 0;
    long missed16 = 0;
    long missedVersions12 = 0;
    long missedVersions16 = 0;
};

// Every pair within 16 bits, one probe range at a time: the pairs (a, b),
// a < b, with a's unturned hash within 16 bits of a turn of b's.
Counts countPairs(const std::vector<Turns>& turns, const std::vector<int>& scenes, int from, int to,
                  const TurnedHashes& all) {
    std::vector<std::uint64_t> probes;
    for (int a = from; a < to; ++a) {
        probes.push_back(turns[a][0]);
    }
    std::vector<HammingScan::Hit> hits;
    HammingScan::within(probes, all, 16, hits, HammingScan::best());
    Counts counts;
    for (const auto& hit : hits) {
        int a = from + hit.probe;
        int b = hit.entry;
        if (a >= b) {
            continue;
        }
        int d = 64;
        for (std::uint64_t turned : turns[b]) {
            d = std::min(d, std::popcount(turns[a][0] ^ turned));
        }
        bool missed = !sharesByte(turns[a], turns[b][0]) && !sharesByte(turns[b], turns[a][0]);
        counts.within16 += 1;
        counts.missed16 += missed ? 1 : 0;
        counts.within12 += d <= 12 ? 1 : 0;
        counts.missed12 += d <= 12 && missed ? 1 : 0;
        bool versions = scenes[a] >= 0 && scenes[a] == scenes[b];
        counts.missedVersions16 += missed && versions ? 1 : 0;
        counts.missedVersions12 += d <= 12 && missed && versions ? 1 : 0;
    }
    return counts;
}

// `sceneOf` answers a picture's scene, or -1 when it is not known.
int run(std::vector<brevant::PhotoAsset> pictures,
        std::vector<std::optional<brevant::ImageFeatures>> features,
        const std::function<int(const brevant::PhotoAsset&)>& sceneOf) {
    std::vector<Turns> turns;
    std::vector<int> scenes;
    for (std::size_t i = 0; i < features.size(); ++i) {
        const auto& f = features[i];
        // The misses of the four turns; mirrored orientations, where
        // measured, are left out of this count.
        if (f && f->hashes.size() >= 4) {
            turns.push_back({f->hashes[0], f->hashes[1], f->hashes[2], f->hashes[3]});
            scenes.push_back(sceneOf(pictures[i]));
        }
    }
    auto n = static_cast<int>(turns.size());
    TurnedHashes all;
    all.assign(turns);

    constexpr int kSlice = 2048;
    std::vector<int> slices;
    for (int from = 0; from < n; from += kSlice) {
        slices.push_back(from);
    }
    auto start = Clock::now();
    double processor = processorSeconds();
    auto parts = brevant::parallelMap(slices, NeverCancelled{}, [&](int from) {
        return countPairs(turns, scenes, from, std::min(n, from + kSlice), all);
    });
    double everyPair = std::chrono::duration<double>(Clock::now() - start).count();
    double everyPairProcessor = processorSeconds() - processor;
    Counts total;
    for (const auto& part : parts) {
        if (!part) {
            continue;
        }
        total.within12 += part->within12;
        total.within16 += part->within16;
        total.missed12 += part->missed12;
        total.missed16 += part->missed16;
        total.missedVersions12 += part->missedVersions12;
        total.missedVersions16 += part->missedVersions16;
    }

    brevant::CancellationFlag cancel;
    start = Clock::now();
    processor = processorSeconds();
    auto candidates = brevant::SimilarityMatcher::candidatePairs(pictures, features, cancel);
    double byRule = std::chrono::duration<double>(Clock::now() - start).count();
    double byRuleProcessor = processorSeconds() - processor;

    auto share = [](long part, long whole) {
        return whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    };
    fmt::print("{} pictures with four turns\n", n);
    fmt::print("pairs within 12 bits: {}, sharing no byte: {} ({:.2f} %), of them versions of "
               "one photo: {}\n",
               total.within12, total.missed12, share(total.missed12, total.within12),
               total.missedVersions12);
    fmt::print("pairs within 16 bits: {}, sharing no byte: {} ({:.2f} %), of them versions of "
               "one photo: {}\n",
               total.within16, total.missed16, share(total.missed16, total.within16),
               total.missedVersions16);
    fmt::print("every pair compared ({} kernel): {:.2f} s wall, {:.2f} s processor\n",
               HammingScan::name(HammingScan::best()), everyPair, everyPairProcessor);
    fmt::print("proposed by the rule ({} proposals, {} kept): {:.2f} s wall, {:.2f} s processor\n",
               candidates ? candidates->proposed : 0, candidates ? candidates->pairs.size() : 0,
               byRule, byRuleProcessor);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    int count = 100'000;
    std::string kind = "clustered";
    unsigned seed = 1;
    std::string corpus;
    std::optional<std::string> cache;
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string flag = argv[i];
        if (flag == "--pictures") {
            count = std::atoi(argv[i + 1]);
        } else if (flag == "--kind") {
            kind = argv[i + 1];
        } else if (flag == "--seed") {
            seed = static_cast<unsigned>(std::atoi(argv[i + 1]));
        } else if (flag == "--corpus") {
            corpus = argv[i + 1];
        } else if (flag == "--cache") {
            cache = argv[i + 1];
        }
    }
    if (corpus.empty()) {
        // Four turns: what this count covers (see run).
        auto library = bench::syntheticLibrary(count, kind, seed, brevant::ImageFeatures::kTurns);
        fmt::print("{} synthetic pictures, {}\n", count, kind);
        return run(std::move(library.pictures), std::move(library.features),
                   [](const brevant::PhotoAsset&) { return -1; });
    }
    brevant::CancellationFlag cancel;
    auto scan = brevant::ExactMatcher::scan({corpus}, true, std::nullopt, cancel, {});
    brevant::FeatureCache features(cache);
    auto index = brevant::SimilarityMatcher::index(scan.pictures, &features, false, cancel, {});
    if (!index) {
        return 1;
    }
    fmt::print("{}: {} pictures measured\n", corpus, index->pictures.size());
    std::map<std::string, int> scenes;
    std::ifstream truth(corpus + "/truth.txt");
    for (std::string line; std::getline(truth, line);) {
        auto tab = line.find('\t');
        if (tab != std::string::npos) {
            scenes[corpus + "/" + line.substr(0, tab)] = std::atoi(line.c_str() + tab + 1);
        }
    }
    return run(index->pictures, index->features, [&](const brevant::PhotoAsset& picture) {
        auto scene = scenes.find(picture.path);
        return scene == scenes.end() ? -1 : scene->second;
    });
}
