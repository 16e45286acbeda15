// The corpus for the similar-run benchmark, and scoring what a tool found
// on it.
//
//   bench_similar_corpus make DIR [--photos N] [--seed S] [--mirrors PERCENT]
//   bench_similar_corpus score DIR brevant|findimagedupes OUTPUT
//   bench_similar_corpus faces DIR REPORT
//
// `make` writes N 12-megapixel photos (4000x3000 JPEG, quality 90, each a
// scene of its own with grain, an EXIF capture date a minute or more after
// the last) under DIR/Pictures, and for about a quarter of them one or two
// other versions elsewhere: half-size exports, copies re-saved at quality
// 60, copies turned a quarter, crops of the middle 90 % and brightened
// edits. With --mirrors, that share of the scenes also gets a left-right
// mirror image (half of them turned a quarter too), drawn apart so the rest
// of the corpus is the same as without. DIR/truth.txt names each picture's
// scene.
//
// `score` reads the groups a tool printed (brevant's report, or
// findimagedupes' lines of paths) and prints precision and recall over
// pairs: a pair put in one group is right when both pictures show the same
// scene, and every pair of pictures of one scene should be found.
//
// `faces` reads the faces of every member of the groups in brevant's report,
// as the window does after grouping (the report itself reads none), with
// four workers, and prints the time it took.
#include "tests/fixtures/ImageFixtures.hpp"

#include "engine/platform/VipsRuntime.hpp"
#include "engine/similarity/FaceCheck.hpp"
#include "engine/support/ParallelMap.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>
#include <vips/vips8>

namespace {

namespace fs = std::filesystem;
using vips::VImage;

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;

std::string exifDate(long seconds) {
    // 2020-01-01 00:00:00 onwards.
    long day = seconds / 86'400;
    long rest = seconds % 86'400;
    return fmt::format("2020:{:02}:{:02} {:02}:{:02}:{:02}", 1 + day / 28 % 12, 1 + day % 28,
                       rest / 3600, rest / 60 % 60, rest % 60);
}

struct NeverCancelled {
    [[nodiscard]] bool isCancelled() const { return false; }
};

// One scene and its other versions; answers the paths written.
std::vector<std::string> writeScene(const std::string& root, int i, unsigned seed, int mirrors) {
    // Each scene draws from its own generator, so the workers' order does
    // not change the corpus.
    std::mt19937 random(seed * 7919 + static_cast<unsigned>(i));
    auto chance = [&](double p) { return std::bernoulli_distribution(p)(random); };
    std::vector<std::string> written;
    // A minute to an hour after the previous scene.
    std::string date = exifDate(static_cast<long>(i) * 1860 + static_cast<long>(random() % 1800));
    auto write = [&](const VImage& image, const std::string& relative, int quality) {
        brevant::testing::saveImage(image, root + "/" + relative,
                                    {.quality = quality, .exifDate = date});
        written.push_back(relative);
    };
    VImage photo = brevant::testing::makeScene(kWidth, kHeight, seed * 100'003 + i);
    std::string name = fmt::format("IMG_{:05}.jpg", i);
    write(photo, fmt::format("Pictures/{:02}/{}", i / 200, name), 90);
    std::mt19937 mirrorRandom(seed * 104'729 + static_cast<unsigned>(i));
    if (static_cast<int>(mirrorRandom() % 100) < mirrors) {
        if (mirrorRandom() % 2 == 0) {
            write(photo.fliphor(), fmt::format("Exports/mirrored/{}", name), 90);
        } else {
            write(photo.fliphor().rot90(), fmt::format("Exports/mirrored-turned/{}", name), 90);
        }
    }
    if (!chance(0.25)) {
        return written;
    }
    std::array<int, 5> kinds = {0, 1, 2, 3, 4};
    std::shuffle(kinds.begin(), kinds.end(), random);
    int versions = chance(0.3) ? 2 : 1;
    for (int v = 0; v < versions; ++v) {
        switch (kinds[v]) {
        case 0:
            write(photo.resize(0.5), fmt::format("Exports/small/{}", name), 85);
            break;
        case 1:
            write(photo, fmt::format("Backup/resaved/{}", name), 60);
            break;
        case 2:
            write(photo.rot90(), fmt::format("Exports/turned/{}", name), 90);
            break;
        case 3:
            write(photo.crop(kWidth / 20, kHeight / 20, kWidth * 9 / 10, kHeight * 9 / 10),
                  fmt::format("Edits/cropped/{}", name), 90);
            break;
        default:
            write((photo.cast(VIPS_FORMAT_FLOAT) * 1.05 + 12).cast(VIPS_FORMAT_UCHAR),
                  fmt::format("Edits/brighter/{}", name), 90);
            break;
        }
    }
    return written;
}

int make(const std::string& root, int photos, unsigned seed, int mirrors) {
    if (!brevant::platform::VipsRuntime::ensureStarted()) {
        fmt::print(stderr, "libvips did not start\n");
        return 1;
    }
    std::vector<int> scenes(photos);
    std::iota(scenes.begin(), scenes.end(), 0);
    auto written = brevant::parallelMap(scenes, NeverCancelled{},
                                        [&](int i) { return writeScene(root, i, seed, mirrors); });
    std::ofstream truth(root + "/truth.txt");
    int files = 0;
    for (int i = 0; i < photos; ++i) {
        for (const auto& relative : written[i].value_or(std::vector<std::string>{})) {
            truth << relative << '\t' << i << '\n';
            files += 1;
        }
    }
    fmt::print("{} pictures of {} scenes under {}\n", files, photos, root);
    return 0;
}

// Scene of every picture, by path relative to the corpus.
std::map<std::string, int> readTruth(const std::string& root) {
    std::map<std::string, int> scenes;
    std::ifstream in(root + "/truth.txt");
    std::string line;
    while (std::getline(in, line)) {
        auto tab = line.find('\t');
        if (tab != std::string::npos) {
            scenes[line.substr(0, tab)] = std::atoi(line.c_str() + tab + 1);
        }
    }
    return scenes;
}

using Groups = std::vector<std::vector<std::string>>;

// "similar: N photos" and then one indented line per member: the path,
// then after three spaces what the report says about it.
Groups readReport(const std::string& file) {
    Groups groups;
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        if (line.starts_with("similar: ")) {
            groups.emplace_back();
        } else if (line.starts_with("  ") && !groups.empty()) {
            std::string path = line.substr(2);
            path = path.substr(0, path.find("   "));
            groups.back().push_back(path);
        }
    }
    return groups;
}

// One group a line, paths separated by spaces (the corpus has none in its
// names).
Groups readLines(const std::string& file) {
    Groups groups;
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::vector<std::string> group;
        for (std::string path; words >> path;) {
            group.push_back(path);
        }
        if (group.size() >= 2) {
            groups.push_back(group);
        }
    }
    return groups;
}

int score(const std::string& root, const std::string& tool, const std::string& output) {
    auto scenes = readTruth(root);
    std::map<int, int> perScene;
    for (const auto& [path, scene] : scenes) {
        perScene[scene] += 1;
    }
    long expected = 0;
    for (const auto& [scene, count] : perScene) {
        expected += static_cast<long>(count) * (count - 1) / 2;
    }
    Groups groups = tool == "brevant" ? readReport(output) : readLines(output);
    std::string prefix = fs::weakly_canonical(root).string() + "/";
    long found = 0;
    long right = 0;
    for (const auto& group : groups) {
        std::vector<int> members;
        for (const auto& path : group) {
            std::string relative = path.starts_with(prefix) ? path.substr(prefix.size()) : path;
            auto scene = scenes.find(relative);
            members.push_back(scene == scenes.end() ? -1 : scene->second);
        }
        for (std::size_t a = 0; a < members.size(); ++a) {
            for (std::size_t b = a + 1; b < members.size(); ++b) {
                found += 1;
                right += members[a] >= 0 && members[a] == members[b] ? 1 : 0;
            }
        }
    }
    double precision = found == 0 ? 1.0 : static_cast<double>(right) / static_cast<double>(found);
    double recall =
        expected == 0 ? 1.0 : static_cast<double>(right) / static_cast<double>(expected);
    fmt::print("{}: {} groups, {} pairs, {} right of {} to find: precision {:.3f}, recall {:.3f}\n",
               tool, groups.size(), found, right, expected, precision, recall);
    return 0;
}

int faces(const std::string& root, const std::string& report) {
    std::vector<std::string> members;
    std::string prefix = fs::weakly_canonical(root).string() + "/";
    for (const auto& group : readReport(report)) {
        for (const auto& path : group) {
            members.push_back(path.starts_with("/") ? path : prefix + path);
        }
    }
    auto start = std::chrono::steady_clock::now();
    auto readings = brevant::parallelMap(members, NeverCancelled{}, [](const std::string& path) {
        return brevant::FaceCheck::reading(path).has_value();
    });
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    auto read = std::ranges::count_if(readings, [](const auto& done) { return done && *done; });
    fmt::print("faces read for {} of {} group members in {:.2f} s\n", read, members.size(),
               seconds);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() >= 2 && arguments[0] == "make") {
        int photos = 1'500;
        unsigned seed = 1;
        int mirrors = 0;
        for (std::size_t i = 2; i + 1 < arguments.size(); i += 2) {
            if (arguments[i] == "--photos") {
                photos = std::atoi(arguments[i + 1].c_str());
            } else if (arguments[i] == "--seed") {
                seed = static_cast<unsigned>(std::atoi(arguments[i + 1].c_str()));
            } else if (arguments[i] == "--mirrors") {
                mirrors = std::atoi(arguments[i + 1].c_str());
            }
        }
        return make(arguments[1], photos, seed, mirrors);
    }
    if (arguments.size() == 3 && arguments[0] == "faces") {
        return faces(arguments[1], arguments[2]);
    }
    if (arguments.size() == 4 && arguments[0] == "score") {
        return score(arguments[1], arguments[2], arguments[3]);
    }
    fmt::print(stderr, "usage: bench_similar_corpus make DIR [--photos N] [--seed S] "
                       "[--mirrors PERCENT]\n"
                       "       bench_similar_corpus score DIR brevant|findimagedupes OUTPUT\n"
                       "       bench_similar_corpus faces DIR REPORT\n");
    return 2;
}
