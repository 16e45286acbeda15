// Compression throughput: photos per second and the share of bytes saved by
// our HEIC writer against libheif's own heif-enc on the same files at the
// same quality, in one run; and seconds of footage per second for videos.
//
//   bench_compress photos [--quality Q] [--limit N] DIR...
//   bench_compress videos [--seconds S] [--preset P] [VIDEO...]
//
// Without VIDEO a 1080p test video of S seconds (default 10) is generated.

#include "tests/fixtures/VideoFixtures.hpp"

#include "engine/platform/HeifWriter.hpp"
#include "engine/platform/VideoProbe.hpp"
#include "engine/platform/VideoTranscoder.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::vector<std::string> photosIn(const std::vector<std::string>& folders, std::size_t limit) {
    std::vector<std::string> found;
    for (const auto& folder : folders) {
        if (!fs::is_directory(folder)) {
            continue;
        }
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            std::string extension = entry.path().extension().string();
            std::ranges::transform(extension, extension.begin(), ::tolower);
            bool photo = extension == ".jpg" || extension == ".jpeg" || extension == ".tif" ||
                         extension == ".tiff";
            if (entry.is_regular_file() && photo && entry.file_size() >= 100'000) {
                found.push_back(entry.path().string());
            }
        }
    }
    std::ranges::sort(found);
    if (found.size() > limit) {
        found.resize(limit);
    }
    return found;
}

struct Tally {
    int written = 0;
    int failed = 0;
    std::int64_t originalBytes = 0;
    std::int64_t copyBytes = 0;
    double seconds = 0;

    void print(const char* who) const {
        double saved = originalBytes > 0 ? 100.0 * (1.0 - static_cast<double>(copyBytes) /
                                                              static_cast<double>(originalBytes))
                                         : 0;
        fmt::print("{:<10} {:>4} written {:>3} failed  {:>8.2f} s  {:>6.2f} photos/s  {:>5.1f}% "
                   "saved\n",
                   who, written, failed, seconds, written / std::max(seconds, 1e-9), saved);
    }
};

int photos(int argc, char** argv) {
    int quality = 50;
    std::size_t limit = 200;
    std::vector<std::string> folders;
    for (int i = 2; i < argc; ++i) {
        std::string argument = argv[i];
        if (argument == "--quality" && i + 1 < argc) {
            quality = std::atoi(argv[++i]);
        } else if (argument == "--limit" && i + 1 < argc) {
            limit = static_cast<std::size_t>(std::atoi(argv[++i]));
        } else {
            folders.push_back(argument);
        }
    }
    auto files = photosIn(folders, limit);
    fs::path out = fs::temp_directory_path() / fmt::format("bench-compress-{}", ::getpid());
    fs::create_directories(out);
    Tally ours;
    Tally reference;
    int n = 0;
    for (const auto& file : files) {
        auto size = static_cast<std::int64_t>(fs::file_size(file));
        std::string mine = (out / fmt::format("{}-ours.heic", n)).string();
        std::string theirs = (out / fmt::format("{}-heif-enc.heic", n)).string();
        ++n;
        auto start = Clock::now();
        auto written = brevant::platform::HeifWriter::write(file, mine, 0600, {.quality = quality});
        double ourSeconds = secondsSince(start);
        start = Clock::now();
        int status = std::system(
            fmt::format("heif-enc -q {} -o '{}' '{}' >/dev/null 2>&1", quality, theirs, file)
                .c_str());
        double theirSeconds = secondsSince(start);
        // Only files both could write count, so the sizes compare.
        if (!written || status != 0) {
            ours.failed += written ? 0 : 1;
            reference.failed += status == 0 ? 0 : 1;
            continue;
        }
        ours.written += 1;
        ours.seconds += ourSeconds;
        ours.originalBytes += size;
        ours.copyBytes += static_cast<std::int64_t>(fs::file_size(mine));
        reference.written += 1;
        reference.seconds += theirSeconds;
        reference.originalBytes += size;
        reference.copyBytes += static_cast<std::int64_t>(fs::file_size(theirs));
    }
    fs::remove_all(out);
    fmt::print("{} photos of at least 100 kB, quality {}\n", files.size(), quality);
    ours.print("brevant");
    reference.print("heif-enc");
    return 0;
}

int videos(int argc, char** argv) {
    int seconds = 10;
    std::string preset = "medium";
    std::vector<std::string> inputs;
    for (int i = 2; i < argc; ++i) {
        std::string argument = argv[i];
        if (argument == "--seconds" && i + 1 < argc) {
            seconds = std::atoi(argv[++i]);
        } else if (argument == "--preset" && i + 1 < argc) {
            preset = argv[++i];
        } else {
            inputs.push_back(argument);
        }
    }
    fs::path out = fs::temp_directory_path() / fmt::format("bench-compress-{}", ::getpid());
    fs::create_directories(out);
    if (inputs.empty()) {
        std::string generated = (out / "generated.mov").string();
        brevant::testing::writeVideo(
            generated,
            {.width = 1920, .height = 1080, .framesPerSecond = 30, .frames = seconds * 30});
        inputs.push_back(generated);
    }
    int n = 0;
    for (const auto& input : inputs) {
        auto facts = brevant::platform::VideoProbe::read(input);
        if (!facts) {
            fmt::print("{}: {}\n", input, facts.error());
            continue;
        }
        std::string copy = (out / fmt::format("{}-copy.mov", n++)).string();
        auto start = Clock::now();
        auto written =
            brevant::platform::VideoTranscoder::transcode(input, copy, 0600, {.preset = preset});
        double wall = secondsSince(start);
        if (!written) {
            fmt::print("{}: {}\n", input, written.error());
            continue;
        }
        double saved = 100.0 * (1.0 - static_cast<double>(fs::file_size(copy)) /
                                          static_cast<double>(fs::file_size(input)));
        fmt::print("{}: {}x{} {} {:.1f} s of footage in {:.1f} s: {:.2f} s of footage per "
                   "second, {:.1f}% saved (x265 preset {})\n",
                   fs::path(input).filename().string(), facts->width, facts->height, facts->codec,
                   facts->durationSeconds, wall, facts->durationSeconds / wall, saved, preset);
    }
    fs::remove_all(out);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "photos") {
        return photos(argc, argv);
    }
    if (mode == "videos") {
        return videos(argc, argv);
    }
    std::fprintf(stderr, "usage: bench_compress photos [--quality Q] [--limit N] DIR...\n"
                         "       bench_compress videos [--seconds S] [--preset P] [VIDEO...]\n");
    return 2;
}
