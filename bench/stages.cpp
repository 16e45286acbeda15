// Times the stages of measuring photos, one thread, one photo at a time:
// the decode to the upright thumbnail, the grey squares, the quality score
// and the whole measuring from the thumbnail.
//
//   bench_stages DIR [--pictures N]
//
// DIR is searched for .jpg files (the first N, 200 unless told).
#include "engine/platform/BrisqueModel.hpp"
#include "engine/platform/GreyRendering.hpp"
#include "engine/platform/ImageDecoder.hpp"
#include "engine/similarity/FeatureExtractor.hpp"

#include <array>
#include <chrono>
#include <filesystem>
#include <fmt/format.h>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::vector<std::string> photosUnder(const std::string& folder, std::size_t limit) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (paths.size() == limit) {
            break;
        }
        if (entry.is_regular_file() && entry.path().extension() == ".jpg") {
            paths.push_back(entry.path().string());
        }
    }
    return paths;
}

struct Stages {
    double decode = 0;
    double squares = 0;
    double quality = 0;
    double features = 0;
};

} // namespace

int main(int argc, char** argv) {
    bool counted = argc == 4 && std::string_view(argv[2]) == "--pictures";
    if (argc != 2 && !counted) {
        fmt::print(stderr, "usage: bench_stages DIR [--pictures N]\n");
        return 2;
    }
    std::size_t limit = argc == 4 ? std::stoul(argv[3]) : 200;
    std::vector<std::string> paths = photosUnder(argv[1], limit);
    using brevant::FeatureExtractor;
    namespace platform = brevant::platform;
    constexpr std::array kSides = {FeatureExtractor::kHashSide, FeatureExtractor::kDetailSide,
                                   FeatureExtractor::kMeasureSide};
    Stages total;
    std::size_t measured = 0;
    for (const std::string& path : paths) {
        auto start = Clock::now();
        auto decoded = platform::ImageDecoder::decode(path, FeatureExtractor::kRenditionSize);
        total.decode += millisecondsSince(start);
        if (!decoded) {
            continue;
        }
        ++measured;
        start = Clock::now();
        bool drawn = platform::GreyRendering::squares(decoded->thumbnail, kSides).has_value();
        total.squares += millisecondsSince(start);
        start = Clock::now();
        bool scored = platform::BrisqueModel::score(decoded->thumbnail).has_value();
        total.quality += millisecondsSince(start);
        start = Clock::now();
        bool whole = FeatureExtractor::features(decoded->thumbnail, decoded->thumbnail.width(),
                                                decoded->thumbnail.height(), std::nullopt, false)
                         .has_value();
        total.features += millisecondsSince(start);
        if (!drawn || !scored || !whole) {
            fmt::print(stderr, "not measured: {}\n", path);
        }
    }
    if (measured == 0) {
        fmt::print(stderr, "no photos decoded under {}\n", argv[1]);
        return 1;
    }
    auto each = [&](double milliseconds) { return milliseconds / static_cast<double>(measured); };
    fmt::print("{} photos, milliseconds each: decode {:.2f}; from the thumbnail: grey squares "
               "{:.2f}, quality score {:.2f}, all features {:.2f}\n",
               measured, each(total.decode), each(total.squares), each(total.quality),
               each(total.features));
    return 0;
}
