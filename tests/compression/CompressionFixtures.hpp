#pragma once

#include "tests/cleanup/ExecutorFixtures.hpp"
#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/VideoFixtures.hpp"

#include "engine/compression/CompressionFinder.hpp"
#include "engine/compression/CompressionJournal.hpp"
#include "engine/compression/Compressor.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace brevant::testing {

// A folder of generated media, the Trash under XDG_DATA_HOME and the
// compression journals, all inside one temporary folder.
struct CompressionWorkspace : CleanupWorkspace {
    std::string compressions = data.compressions();

    // A camera-like JPEG shown turned a quarter (EXIF orientation 6), dated.
    [[nodiscard]] std::string turnedPhoto(std::string_view name, unsigned seed = 7) const {
        return writeScene(tree.path("photos/" + std::string(name)), 1200, 800, seed,
                          {.quality = 95, .orientation = 6, .exifDate = "2024:05:01 10:20:30"});
    }

    // A short high-quality video shown turned a quarter, with sound, dated
    // and placed.
    [[nodiscard]] std::string video(std::string_view name, VideoOptions options = {}) const {
        if (options.rotation == 0 && options.codec != "hevc") {
            options.rotation = 90;
        }
        std::string path = tree.path("photos/" + std::string(name));
        writeVideo(path, options);
        return path;
    }

    // The plan the finder makes over photos/, every size considered.
    [[nodiscard]] CompressionPlan planOfAll() const {
        CancellationFlag cancel;
        return CompressionFinder::find({.folders = {photos}, .minBytes = 0}, cancel).plan;
    }

    // The names in photos/, sorted.
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(photos)) {
            found.push_back(entry.path().filename().string());
        }
        std::ranges::sort(found);
        return found;
    }

    [[nodiscard]] std::string journalOf(const CompressionPlan& plan) const {
        return CompressionJournal::pathFor(plan.id, compressions);
    }
};

} // namespace brevant::testing
