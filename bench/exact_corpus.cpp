// The corpus for the exact-matcher benchmark, and the check that every
// tool found the same groups.
//
//   bench_exact_corpus make DIR [--files N] [--seed S]
//   bench_exact_corpus small DIR [--files N] [--seed S]
//   bench_exact_corpus agree OURS.json NAME=FDUPES_FORMAT_FILE...
//   bench_exact_corpus stages DIR
//
// `make` writes about N photo-sized JPEG files (1 to 3 MB) under DIR, laid
// out as a photo collection that was copied around over the years:
// originals by year and month, backups and exports holding byte-identical
// copies, edits of exactly the same size as their original (some differing
// only after the first 64 KiB, some from the first bytes), hard links in an
// album folder and a few copied XMP sidecars that are not pictures. Every
// file is a real JPEG (a few dozen pictures made with libvips, each file
// padded after its end-of-image marker with bytes of its own), so a scan
// reads every header as readable. It prints the number of groups of
// identical pictures a correct tool must find.
//
// `small` writes N small pictures (tiny JPEGs of 0.4 to 2.5 KB, padded after
// their end marker so each is a file of its own) in folders of 1,000, one in
// twenty copied byte for byte into a backup folder: a library of a million
// pictures without a million photos' worth of bytes.
//
// `agree` reads our `brevant scan --json` result and the groups that other
// tools printed in fdupes' format (groups of paths separated by empty
// lines), keeps only the pictures, folds hard links (a group is the set of
// distinct files it names) and checks that every tool found exactly our
// groups. It exits 1 when one did not, or when our scan skipped anything.
//
// `stages` scans DIR once (keeping every picture, as the similarity steps
// need) and prints the time spent in each stage and the peak memory.
#include "engine/platform/VipsRuntime.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanResult.hpp"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>
#include <vips/vips8>

namespace {

namespace fs = std::filesystem;
using vips::VImage;

constexpr int kBasePictures = 48;

// A picture with sensor-like grain, so that it compresses as a photo does
// (about 1 MB at this size).
std::string basePicture(int index) {
    bool portrait = index % 4 == 3;
    int width = portrait ? 1200 : 1600;
    int height = portrait ? 1600 : 1200;
    VImage noise = VImage::gaussnoise(
        width, height,
        VImage::option()->set("sigma", 18.0)->set("mean", 100.0 + index)->set("seed", index));
    VImage xy = VImage::xyz(width, height);
    VImage picture = VImage::bandjoin({noise + xy[0] / (10 + index % 7),
                                       noise * 0.8 + xy[1] / (12 + index % 5), noise * 0.6 + 40})
                         .cast(VIPS_FORMAT_UCHAR);
    void* data = nullptr;
    std::size_t length = 0;
    picture.write_to_buffer(".jpg", &data, &length, VImage::option()->set("Q", 92));
    std::string bytes(static_cast<const char*>(data), length);
    g_free(data);
    return bytes;
}

class Corpus {
public:
    Corpus(std::string root, unsigned seed)
        : root_(std::move(root))
        , random_(seed) {
        for (int i = 0; i < kBasePictures; ++i) {
            bases_.push_back(basePicture(i));
        }
    }

    // A photo of its own: a base picture and bytes after its end marker
    // that no other photo has.
    std::string photo(std::size_t size, std::size_t base) {
        std::string bytes = bases_[base % bases_.size()];
        bytes.reserve(size);
        while (bytes.size() < size) {
            auto word = random_();
            for (int i = 0; i < 4 && bytes.size() < size; ++i) {
                bytes.push_back(static_cast<char>(word >> (8 * i)));
            }
        }
        return bytes;
    }

    std::size_t randomSize() {
        std::size_t largest = 0;
        for (const auto& base : bases_) {
            largest = std::max(largest, base.size());
        }
        return largest + 200'000 +
               std::uniform_int_distribution<std::size_t>(0, 1'800'000)(random_);
    }

    std::size_t randomBase() {
        return std::uniform_int_distribution<std::size_t>(0, bases_.size() - 1)(random_);
    }

    bool chance(double probability) { return std::bernoulli_distribution(probability)(random_); }

    std::string write(const std::string& relative, const std::string& bytes) {
        std::string path = root_ + "/" + relative;
        std::error_code error;
        fs::create_directories(fs::path(path).parent_path(), error);
        std::ofstream out(path, std::ios::binary);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        files_ += 1;
        return path;
    }

    void link(const std::string& existing, const std::string& relative) {
        std::string path = root_ + "/" + relative;
        std::error_code error;
        fs::create_directories(fs::path(path).parent_path(), error);
        fs::create_hard_link(existing, path, error);
        files_ += 1;
    }

    [[nodiscard]] int files() const { return files_; }

private:
    std::string root_;
    std::mt19937_64 random_;
    std::vector<std::string> bases_;
    int files_ = 0;
};

int make(const std::string& root, int target, unsigned seed) {
    if (!brevant::platform::VipsRuntime::ensureStarted()) {
        fmt::print(stderr, "libvips did not start\n");
        return 1;
    }
    Corpus corpus(root, seed);
    // Each original brings on average about 0.45 further files.
    int originals = static_cast<int>(target / 1.45);
    int groups = 0;
    for (int i = 0; i < originals; ++i) {
        int year = 2015 + i % 10;
        int month = 1 + (i / 10) % 12;
        std::string name = fmt::format("IMG_{:04}.jpg", i);
        std::size_t size = corpus.randomSize();
        std::size_t base = corpus.randomBase();
        std::string bytes = corpus.photo(size, base);
        std::string original =
            corpus.write(fmt::format("Pictures/{}/{:02}/{}", year, month, name), bytes);
        int copies = 0;
        if (corpus.chance(0.22)) {
            corpus.write(fmt::format("Backup/Pictures {}/{:02}/{}", year, month, name), bytes);
            copies += 1;
        }
        if (corpus.chance(0.08)) {
            corpus.write(fmt::format("Phone export/{}", name), bytes);
            copies += 1;
        }
        if (corpus.chance(0.03)) {
            corpus.write(fmt::format("Desktop/to sort/{} copy.jpg", name.substr(0, 8)), bytes);
            copies += 1;
        }
        groups += copies > 0 ? 1 : 0;
        if (corpus.chance(0.08)) {
            // Same size, same first megabyte or so: only the full hash
            // tells them apart. Or different from the first byte.
            std::size_t twinBase = corpus.chance(0.5) ? base : corpus.randomBase();
            corpus.write(fmt::format("Edits/{}/{}", year, name), corpus.photo(size, twinBase));
        }
        if (corpus.chance(0.04)) {
            corpus.link(original, fmt::format("Albums/Best of {}/{}", year, name));
        }
        if (corpus.chance(0.03)) {
            std::string sidecar = fmt::format("<x:xmpmeta>{}</x:xmpmeta>\n", i);
            corpus.write(fmt::format("Pictures/{}/{:02}/IMG_{:04}.xmp", year, month, i), sidecar);
            corpus.write(fmt::format("Backup/Pictures {}/{:02}/IMG_{:04}.xmp", year, month, i),
                         sidecar);
        }
    }
    fmt::print("{} files under {}; {} groups of identical pictures\n", corpus.files(), root,
               groups);
    return 0;
}

int makeSmall(const std::string& root, int target, unsigned seed) {
    if (!brevant::platform::VipsRuntime::ensureStarted()) {
        fmt::print(stderr, "libvips did not start\n");
        return 1;
    }
    // A few dozen tiny JPEGs; each file is one of them with bytes of its
    // own after the end marker.
    std::vector<std::string> bases;
    for (int i = 0; i < 32; ++i) {
        VImage noise = VImage::gaussnoise(
            16, 12, VImage::option()->set("sigma", 30.0)->set("mean", 80.0 + i)->set("seed", i));
        void* data = nullptr;
        std::size_t length = 0;
        VImage::bandjoin({noise, noise * 0.9, noise * 0.7})
            .cast(VIPS_FORMAT_UCHAR)
            .write_to_buffer(".jpg", &data, &length, VImage::option()->set("Q", 80));
        bases.emplace_back(static_cast<const char*>(data), length);
        g_free(data);
    }
    std::mt19937_64 random(seed);
    constexpr int kPerFolder = 1'000;
    int copies = 0;
    std::error_code error;
    for (int i = 0; i < target; ++i) {
        std::string folder = fmt::format("{}/Pictures/{:04}", root, i / kPerFolder);
        if (i % kPerFolder == 0) {
            fs::create_directories(folder, error);
        }
        std::string bytes = bases[random() % bases.size()];
        for (auto padding = random() % 2'000; padding > 0; --padding) {
            bytes.push_back(static_cast<char>(random()));
        }
        std::string name = fmt::format("IMG_{:07}.jpg", i);
        std::ofstream(folder + "/" + name, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (i % 20 == 0) {
            std::string backup = fmt::format("{}/Backup/{:04}", root, i / kPerFolder);
            fs::create_directories(backup, error);
            std::ofstream(backup + "/" + name, std::ios::binary)
                .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            copies += 1;
        }
    }
    fmt::print("{} files under {}; {} groups of identical pictures\n", target + copies, root,
               copies);
    return 0;
}

using Group = std::set<std::pair<std::uint64_t, std::uint64_t>>;
using Groups = std::set<Group>;

bool isPicture(const std::string& path) {
    auto dot = path.rfind('.');
    return dot != std::string::npos && path.substr(dot) == ".jpg";
}

// Adds the group when it names two or more distinct files.
void addFolded(Groups& groups, const std::vector<std::string>& paths) {
    Group group;
    for (const auto& path : paths) {
        struct stat status{};
        if (isPicture(path) && ::stat(path.c_str(), &status) == 0) {
            group.insert({status.st_dev, status.st_ino});
        }
    }
    if (group.size() >= 2) {
        groups.insert(group);
    }
}

Groups readFdupesFormat(const std::string& file) {
    Groups groups;
    std::ifstream in(file);
    std::vector<std::string> paths;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty()) {
            addFolded(groups, paths);
            paths.clear();
        } else {
            paths.push_back(line);
        }
    }
    addFolded(groups, paths);
    return groups;
}

int agree(const std::string& oursFile, const std::vector<std::string>& peers) {
    std::ifstream in(oursFile);
    std::stringstream text;
    text << in.rdbuf();
    auto ours = brevant::ScanResult::decode(text.str());
    if (!ours) {
        fmt::print(stderr, "{}\n", ours.error());
        return 1;
    }
    Groups expected;
    for (const auto& group : ours->groups) {
        std::vector<std::string> paths;
        paths.reserve(group.members.size());
        for (const auto& member : group.members) {
            paths.push_back(member.path);
        }
        addFolded(expected, paths);
    }
    fmt::print("brevant: {} pictures examined, {} skipped, {} groups\n", ours->examined,
               ours->skipped.size(), expected.size());
    bool allAgree = ours->skipped.empty() && ours->groups.size() == expected.size();
    for (const auto& peer : peers) {
        auto equals = peer.find('=');
        std::string name = peer.substr(0, equals);
        Groups found = readFdupesFormat(peer.substr(equals + 1));
        bool same = found == expected;
        fmt::print("{}: {} groups, {}\n", name, found.size(),
                   same ? "the same as brevant's" : "NOT the same as brevant's");
        allAgree = allAgree && same;
    }
    return allAgree ? 0 : 1;
}

// One scan with the wall time spent in each stage.
int stages(const std::string& root) {
    using Clock = std::chrono::steady_clock;
    using Stage = brevant::ScanProgress::Stage;
    brevant::CancellationFlag cancel;
    auto start = Clock::now();
    auto last = start;
    std::optional<Stage> stage;
    // Seconds in each stage, summed over the batches that alternate them.
    std::vector<std::pair<Stage, double>> spent;
    auto account = [&](Clock::time_point at) {
        if (!stage) {
            return;
        }
        auto it = std::ranges::find(spent, *stage, &std::pair<Stage, double>::first);
        if (it == spent.end()) {
            it = spent.insert(spent.end(), {*stage, 0.0});
        }
        it->second += std::chrono::duration<double>(at - last).count();
    };
    auto progress = [&](const brevant::ScanProgress& now) {
        if (stage == now.stage) {
            return;
        }
        auto at = Clock::now();
        account(at);
        stage = now.stage;
        last = at;
    };
    auto result = brevant::ExactMatcher::scan({root}, true, std::nullopt, cancel, progress);
    account(Clock::now());
    for (const auto& [name, seconds] : spent) {
        fmt::print("  {:<34} {:7.3f} s\n", rawValue(name), seconds);
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    fmt::print("  total {:.3f} s: {} examined, {} groups; peak memory {} MB\n",
               std::chrono::duration<double>(Clock::now() - start).count(), result.examined,
               result.groups.size(), usage.ru_maxrss / 1024);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() >= 2 && (arguments[0] == "make" || arguments[0] == "small")) {
        bool small = arguments[0] == "small";
        int files = small ? 1'000'000 : 2'200;
        unsigned seed = 1;
        for (std::size_t i = 2; i + 1 < arguments.size(); i += 2) {
            if (arguments[i] == "--files") {
                files = std::atoi(arguments[i + 1].c_str());
            } else if (arguments[i] == "--seed") {
                seed = static_cast<unsigned>(std::atoi(arguments[i + 1].c_str()));
            }
        }
        return small ? makeSmall(arguments[1], files, seed) : make(arguments[1], files, seed);
    }
    if (arguments.size() == 2 && arguments[0] == "stages") {
        return stages(arguments[1]);
    }
    if (arguments.size() >= 2 && arguments[0] == "agree") {
        return agree(arguments[1], {arguments.begin() + 2, arguments.end()});
    }
    fmt::print(stderr, "usage: bench_exact_corpus make DIR [--files N] [--seed S]\n"
                       "       bench_exact_corpus small DIR [--files N] [--seed S]\n"
                       "       bench_exact_corpus stages DIR\n"
                       "       bench_exact_corpus agree OURS.json NAME=FILE...\n");
    return 2;
}
