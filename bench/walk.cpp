// Times FolderSource::walk over a generated tree of nested folders.
//
//   bench_walk [--files N] [--runs R] [--cold 1]
//
// The tree mixes pictures (one byte each, so no decoding is involved), their
// sidecars and other files, about 100 to a folder three levels deep. With
// --cold (root only) the kernel's caches are dropped before every run, so
// each walk reads the folders from disk; the figure reported is the best run.
#include "engine/scan/FolderSource.hpp"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <string>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using brevant::CancellationFlag;
using brevant::FolderSource;

void dropCaches() {
    ::sync();
    int descriptor = ::open("/proc/sys/vm/drop_caches", O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) {
        std::perror("drop_caches (needs root)");
        return;
    }
    [[maybe_unused]] auto written = ::write(descriptor, "3", 1);
    ::close(descriptor);
}

void writeFile(const std::string& path) {
    int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (descriptor >= 0) {
        [[maybe_unused]] auto written = ::write(descriptor, "x", 1);
        ::close(descriptor);
    }
}

std::string makeTree(int files) {
    std::string root = (fs::temp_directory_path() / "brevant-bench-walk-XXXXXX").string();
    if (::mkdtemp(root.data()) == nullptr) {
        std::perror("mkdtemp");
        std::exit(1);
    }
    constexpr int kPerFolder = 100;
    std::error_code ec;
    for (int i = 0; i < files; ++i) {
        int folder = i / kPerFolder;
        std::string dir =
            fmt::format("{}/{:02}/{:02}/{:04}", root, folder % 10, (folder / 10) % 10, folder);
        if (i % kPerFolder == 0) {
            fs::create_directories(dir, ec);
        }
        const char* extension = (i % 10 == 9) ? "txt" : (i % 10 == 8) ? "xmp" : "jpg";
        writeFile(fmt::format("{}/IMG_{:06}.{}", dir, i, extension));
    }
    return root;
}

} // namespace

int main(int argc, char** argv) {
    int files = 100'000;
    int runs = 3;
    bool cold = false;
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string flag = argv[i];
        if (flag == "--files") {
            files = std::atoi(argv[i + 1]);
        } else if (flag == "--runs") {
            runs = std::atoi(argv[i + 1]);
        } else if (flag == "--cold") {
            cold = std::atoi(argv[i + 1]) != 0;
        }
    }
    auto made = std::chrono::steady_clock::now();
    std::string root = makeTree(files);
    double makeSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - made).count();
    fmt::print("tree: {} files under {} (made in {:.2f} s)\n", files, root, makeSeconds);

    double best = 1e9;
    FolderSource::Walk walk;
    for (int run = 0; run < runs; ++run) {
        if (cold) {
            dropCaches();
        }
        CancellationFlag cancel;
        auto start = std::chrono::steady_clock::now();
        walk = FolderSource::walk({root}, std::nullopt, cancel, nullptr);
        double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        fmt::print("run {}: {:.3f} s\n", run + 1, seconds);
        best = std::min(best, seconds);
    }
    fmt::print("walk: {} entries, {} pictures, {} other files in {:.3f} s "
               "({:.0f} entries/s, best of {}{})\n",
               walk.discovered, walk.found.size(), walk.otherFiles, best, walk.discovered / best,
               runs, cold ? ", cold cache" : "");

    std::error_code ec;
    fs::remove_all(root, ec);
    return walk.discovered == files ? 0 : 1;
}
