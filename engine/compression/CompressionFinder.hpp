#pragma once

#include "engine/compression/CompressionPlan.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ExcludedItem.hpp"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace brevant {

// What to look for.
struct CompressionRequest {
    std::vector<std::string> folders;
    bool photos = true;
    bool videos = true;
    // JPEGs with an appended movie, made into stills whatever their size.
    bool motionPhotos = false;
    // Files smaller than this are not considered.
    std::int64_t minBytes = kDefaultMinBytes;

    static constexpr std::int64_t kDefaultMinBytes = 1'000'000;
};

// A file looked at and passed over, with why as a sentence.
struct PassedOver {
    std::string path;
    std::string reason;

    friend bool operator==(const PassedOver&, const PassedOver&) = default;
};

// What a search found: the plan to approve, the folders refused and the
// files passed over.
struct CompressionCandidates {
    CompressionPlan plan;
    std::vector<ExcludedItem> refused;
    std::vector<ExcludedItem> excluded;
    std::vector<PassedOver> passedOver;
    bool cancelled = false;
};

// Finds the files worth a smaller copy over chosen folders, with the roots,
// refusals and walk of a scan: JPEG and TIFF photos, videos that are not
// already HEVC at 1080p or less, and motion photos; each with its size and
// the saving expected.
struct CompressionFinder {
    // Called with the count of files looked at so far.
    using Progress = std::function<void(int looked)>;

    [[nodiscard]] static CompressionCandidates find(const CompressionRequest& request,
                                                    const CancellationFlag& cancel,
                                                    const Progress& progress = {});

    // The bytes a copy is expected to save: a rough share of a photo's
    // size, and for a video what is left after the bit rate an HEVC copy
    // at its size is expected to take.
    [[nodiscard]] static std::int64_t estimatedSaving(const PlannedCompression& item);
};

} // namespace brevant
