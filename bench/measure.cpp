// Times FeatureExtractor over 12-megapixel photos against the bare libvips
// thumbnail decode of the same files, and against findimagedupes.
//
//   bench_measure [--jpegs N] [--heics N] [--runs R] [--dir PATH] [--peer 0]
//                 [--cache RECORDS]
//
// The corpus is made of grainy synthetic 4000x3000 photos (grain is what
// makes JPEG decoding cost what it costs on real photos), written once into
// --dir (kept) or a temporary folder (removed). Both passes use four
// workers through parallelMap; runs alternate and the best of each is
// reported. The overhead is measuring time over bare decoding time, minus
// one. findimagedupes, when installed, fingerprints the same JPEGs in the
// same run (bench/measure installs it). Last, a feature cache of --cache
// records (100,000 by default) is saved and loaded again.
#include "engine/platform/DataFolder.hpp"
#include "engine/platform/VipsRuntime.hpp"
#include "engine/similarity/FeatureCache.hpp"
#include "engine/similarity/FeatureExtractor.hpp"
#include "engine/support/ParallelMap.hpp"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <random>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <vips/vips8>

extern char** environ;

namespace {

namespace fs = std::filesystem;
using brevant::FeatureExtractor;
using brevant::parallelMap;
using vips::VImage;

struct NeverCancelled {
    [[nodiscard]] bool isCancelled() const { return false; }
};

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

// A colour gradient, a few shapes and sensor-like grain in every band.
VImage makePhoto(unsigned seed) {
    std::mt19937 random(seed);
    auto uniform = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    VImage xy = VImage::xyz(kWidth, kHeight);
    VImage ramp = (xy[0] * uniform(0.2, 1.0) + xy[1] * uniform(0.2, 1.0)) / (kWidth + kHeight);
    std::vector<VImage> bands;
    bands.reserve(3);
    for (int band = 0; band < 3; ++band) {
        bands.push_back(ramp * uniform(60, 160) + uniform(20, 80));
    }
    VImage image = VImage::bandjoin(bands).cast(VIPS_FORMAT_UCHAR).copy_memory();
    for (int i = 0; i < 12; ++i) {
        std::vector<double> ink = {uniform(0, 255), uniform(0, 255), uniform(0, 255)};
        int size = static_cast<int>(uniform(100, 900));
        image.draw_circle(ink, static_cast<int>(uniform(0, kWidth)),
                          static_cast<int>(uniform(0, kHeight)), size,
                          VImage::option()->set("fill", true));
    }
    std::vector<VImage> grain;
    grain.reserve(3);
    for (int band = 0; band < 3; ++band) {
        grain.push_back(VImage::gaussnoise(
            kWidth, kHeight,
            VImage::option()->set("sigma", 9.0)->set("seed", static_cast<int>(seed * 3 + band))));
    }
    return (image + VImage::bandjoin(grain)).cast(VIPS_FORMAT_UCHAR);
}

std::vector<std::string> makeCorpus(const std::string& folder, const std::string& extension,
                                    int count, unsigned firstSeed) {
    std::vector<std::string> paths;
    paths.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i) {
        paths.push_back(fmt::format("{}/photo-{:03}.{}", folder, i, extension));
    }
    auto made = parallelMap(paths, NeverCancelled{}, [&](const std::string& path) {
        std::error_code error;
        if (fs::exists(path, error)) {
            return true;
        }
        auto index = static_cast<unsigned>(&path - paths.data());
        VImage photo = makePhoto(firstSeed + index);
        std::string partial = path + ".partial." + extension;
        auto options = VImage::option()->set("Q", extension == "jpg" ? 92 : 60);
        if (extension == "heic") {
            options->set("effort", 0);
        }
        photo.write_to_file(partial.c_str(), options);
        fs::rename(partial, path, error);
        return !error;
    });
    if (!std::ranges::all_of(made, [](const auto& ok) { return ok && *ok; })) {
        fmt::print(stderr, "could not write the {} corpus\n", extension);
        std::exit(1);
    }
    return paths;
}

// Reads every file once so that both passes start from the page cache.
void warm(const std::vector<std::string>& paths) {
    std::vector<char> buffer(1 << 20);
    for (const std::string& path : paths) {
        int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        while (descriptor >= 0 && ::read(descriptor, buffer.data(), buffer.size()) > 0) {
        }
        ::close(descriptor);
    }
}

template <class Work> double timed(const std::vector<std::string>& paths, Work work) {
    auto start = std::chrono::steady_clock::now();
    auto results = parallelMap(paths, NeverCancelled{}, work);
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!std::ranges::all_of(results, [](const auto& ok) { return ok && *ok; })) {
        fmt::print(stderr, "a picture failed to decode\n");
        std::exit(1);
    }
    return seconds;
}

bool bareDecode(const std::string& path) {
    VImage thumbnail = VImage::thumbnail(path.c_str(), FeatureExtractor::kRenditionSize,
                                         VImage::option()
                                             ->set("height", FeatureExtractor::kRenditionSize)
                                             ->set("size", VIPS_SIZE_DOWN));
    return thumbnail.copy_memory().width() > 0;
}

bool measure(const std::string& path) {
    return FeatureExtractor::features(path, false).has_value();
}

std::optional<double> timedPeer(const std::vector<std::string>& paths) {
    std::vector<std::string> arguments = {"findimagedupes", "-q", "--"};
    arguments.insert(arguments.end(), paths.begin(), paths.end());
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    int spawned = posix_spawnp(&child, "findimagedupes", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        return std::nullopt;
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return std::nullopt;
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Saving and loading a cache as big as a large photo library's.
void timeCache(const std::string& folder, int records) {
    // Named as in the real data folder, but in the benchmark's own folder.
    std::string path = brevant::platform::DataFolder{folder}.featureCache();
    auto start = std::chrono::steady_clock::now();
    auto since = [&] {
        double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        start = std::chrono::steady_clock::now();
        return seconds;
    };
    double saving = 0;
    {
        brevant::FeatureCache cache(path);
        for (int i = 0; i < records; ++i) {
            auto n = static_cast<std::uint64_t>(i);
            brevant::PhotoAsset asset;
            asset.snapshot.identity = {2049, n};
            asset.snapshot.size = 3'000'000 + i;
            asset.snapshot.modifiedSeconds = 1'700'000'000 + i;
            asset.snapshot.modifiedNanoseconds = std::int64_t{i} * 7919;
            brevant::ImageFeatures features;
            features.hashes = {n * 0x9E3779B97F4A7C15ULL, ~n, n << 7, n >> 1};
            features.detailHashes.assign(4, brevant::DetailHash{n, ~n, n * 3, n * 5});
            features.sharpness = i * 1e-4;
            features.meanLuma = 0.5;
            features.clipped = 0.01;
            features.captureDate = brevant::Date{7e8 + i};
            features.pixelWidth = 4000;
            features.pixelHeight = 3000;
            cache.store(asset, features);
        }
        since();
        cache.save();
        saving = since();
    }
    brevant::FeatureCache loaded(path);
    double loading = since();
    std::error_code error;
    auto bytes = fs::file_size(path, error);
    fmt::print("cache of {} records: save {:.2f} s, load {:.2f} s, {:.1f} MB ({} loaded)\n",
               records, saving, loading, static_cast<double>(bytes) / 1e6, loaded.count());
    fs::remove(path, error);
}

struct Figures {
    double bare = 1e9;
    double measured = 1e9;
    // Median over runs of measured / bare - 1. Each run times both passes
    // back to back, so a pair shares whatever else the machine is doing.
    double overhead = 0;
};

Figures compare(const std::string& label, const std::vector<std::string>& paths, int runs) {
    warm(paths);
    Figures best;
    std::vector<double> overheads;
    for (int run = 0; run < runs; ++run) {
        // Alternate which pass goes first so neither always follows the other.
        bool bareFirst = run % 2 == 0;
        double first = timed(paths, bareFirst ? bareDecode : measure);
        double second = timed(paths, bareFirst ? measure : bareDecode);
        double bare = bareFirst ? first : second;
        double measured = bareFirst ? second : first;
        fmt::print("  run {}: bare {:.2f} s, measured {:.2f} s ({:+.1f} %)\n", run + 1, bare,
                   measured, (measured / bare - 1) * 100);
        best.bare = std::min(best.bare, bare);
        best.measured = std::min(best.measured, measured);
        overheads.push_back(measured / bare - 1);
    }
    std::ranges::sort(overheads);
    best.overhead = overheads[overheads.size() / 2];
    auto count = static_cast<double>(paths.size());
    fmt::print("{}: {} photos, best of {}\n", label, paths.size(), runs);
    fmt::print("  bare libvips thumbnail: {:7.2f} s  {:6.2f} photos/s\n", best.bare,
               count / best.bare);
    fmt::print("  FeatureExtractor:       {:7.2f} s  {:6.2f} photos/s\n", best.measured,
               count / best.measured);
    fmt::print("  overhead over bare decode: {:+.1f} % (median of runs), {:+.1f} % (best against "
               "best)\n",
               best.overhead * 100, (best.measured / best.bare - 1) * 100);
    return best;
}

} // namespace

int main(int argc, char** argv) {
    int jpegs = 48;
    int heics = 12;
    int runs = 5;
    int records = 100'000;
    bool peer = true;
    std::string folder;
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string flag = argv[i];
        if (flag == "--jpegs") {
            jpegs = std::atoi(argv[i + 1]);
        } else if (flag == "--heics") {
            heics = std::atoi(argv[i + 1]);
        } else if (flag == "--runs") {
            runs = std::max(1, std::atoi(argv[i + 1]));
        } else if (flag == "--dir") {
            folder = argv[i + 1];
        } else if (flag == "--cache") {
            records = std::atoi(argv[i + 1]);
        } else if (flag == "--peer") {
            peer = std::atoi(argv[i + 1]) != 0;
        }
    }
    if (!brevant::platform::VipsRuntime::ensureStarted()) {
        fmt::print(stderr, "libvips did not start\n");
        return 1;
    }
    bool temporary = folder.empty();
    if (temporary) {
        folder = (fs::temp_directory_path() / "brevant-bench-measure-XXXXXX").string();
        if (::mkdtemp(folder.data()) == nullptr) {
            std::perror("mkdtemp");
            return 1;
        }
    }
    std::error_code error;
    fs::create_directories(folder, error);

    auto made = std::chrono::steady_clock::now();
    std::vector<std::string> jpegPaths = makeCorpus(folder, "jpg", jpegs, 1);
    std::vector<std::string> heicPaths = makeCorpus(folder, "heic", heics, 1000);
    fmt::print("corpus: {} JPEGs and {} HEICs of {}x{} in {} (ready in {:.1f} s)\n", jpegs, heics,
               kWidth, kHeight, folder,
               std::chrono::duration<double>(std::chrono::steady_clock::now() - made).count());

    Figures jpeg = compare("JPEG", jpegPaths, runs);
    if (!heicPaths.empty()) {
        compare("HEIC", heicPaths, runs);
    }
    if (peer) {
        std::optional<double> best;
        for (int run = 0; run < runs; ++run) {
            std::optional<double> seconds = timedPeer(jpegPaths);
            if (!seconds) {
                fmt::print("findimagedupes: not installed or failed (bench/measure installs it)\n");
                best.reset();
                break;
            }
            best = std::min(best.value_or(*seconds), *seconds);
        }
        if (best) {
            auto count = static_cast<double>(jpegPaths.size());
            fmt::print("findimagedupes on the JPEGs: {:7.2f} s  {:6.2f} photos/s\n", *best,
                       count / *best);
            fmt::print("  FeatureExtractor rate / findimagedupes rate: {:.1f}x\n",
                       *best / jpeg.measured);
        }
    }
    if (records > 0) {
        timeCache(folder, records);
    }
    if (temporary) {
        fs::remove_all(folder, error);
    }
    return 0;
}
