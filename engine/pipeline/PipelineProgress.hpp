#pragma once

#include "engine/scan/ScanProgress.hpp"

#include <optional>

namespace brevant {

// Where a scan is on its way to a review: the stage with the scan's counts
// and, in the stages that work through a known number of pictures
// (measuring, checking faces), how many are done of how many.
struct PipelineProgress {
    ScanProgress scan;
    int done = 0;
    std::optional<int> total;

    friend bool operator==(const PipelineProgress&, const PipelineProgress&) = default;
};

} // namespace brevant
