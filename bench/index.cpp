// Times building the similarity index (measuring excluded) over synthetic
// feature sets (see SyntheticLibrary.hpp).
//
//   bench_index [--pictures N] [--kind uniform|clustered] [--seed S] [--orientations 8|4]
#include "bench/SyntheticLibrary.hpp"

#include "engine/platform/BufferReuse.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"

#include <chrono>
#include <cstdlib>
#include <fmt/format.h>
#include <string>
#include <sys/resource.h>

namespace {

long maxResidentMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

// User and system time of the whole process so far: on a machine shared
// with other work it varies far less than wall time.
double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

} // namespace

int main(int argc, char** argv) {
    int count = 100'000;
    std::string kind = "uniform";
    unsigned seed = 1;
    int orientations = brevant::ImageFeatures::kOrientations;
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string flag = argv[i];
        if (flag == "--pictures") {
            count = std::atoi(argv[i + 1]);
        } else if (flag == "--kind") {
            kind = argv[i + 1];
        } else if (flag == "--seed") {
            seed = static_cast<unsigned>(std::atoi(argv[i + 1]));
        } else if (flag == "--orientations") {
            orientations = std::atoi(argv[i + 1]);
        }
    }
    // As in the program, where decoding the pictures has set them by now.
    brevant::platform::BufferReuse::keepFreedBuffers();
    auto library = bench::syntheticLibrary(count, kind, seed, orientations);
    long before = maxResidentMegabytes();

    brevant::CancellationFlag cancel;
    auto start = std::chrono::steady_clock::now();
    double processor = processorSeconds();
    auto index = brevant::SimilarityMatcher::index(std::move(library.pictures),
                                                   std::move(library.features), {}, cancel);
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    processor = processorSeconds() - processor;
    if (!index) {
        return 1;
    }
    auto groupStart = std::chrono::steady_clock::now();
    auto groups = index->groups(brevant::SimilarityPreset::balanced);
    auto series = index->series(3.0, 34.0);
    double groupSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - groupStart).count();
    fmt::print("{} {} pictures, {} orientations: index {:.2f} s ({:.2f} s processor), {} "
               "candidates proposed, {} "
               "pairs kept; balanced groups {}, series {} in {:.2f} s; peak memory {} MB ({} MB "
               "before indexing)\n",
               kind, count, orientations, seconds, processor, index->candidatesProposed,
               index->pairs.size(), groups.size(), series.size(), groupSeconds,
               maxResidentMegabytes(), before);
    return 0;
}
