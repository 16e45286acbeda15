#pragma once

#include "engine/pipeline/ScanSource.hpp"
#include "engine/review/ReviewRules.hpp"
#include "engine/review/ScanMode.hpp"

#include <optional>
#include <string>

namespace brevant {

// Everything a scan is asked: where to look, for what, with which
// measurements kept, and how its groups are reviewed.
struct ScanRequest {
    ScanSource source;
    ScanMode mode;
    // The feature cache file. Without one every picture is measured afresh
    // and nothing is written.
    std::optional<std::string> featureCache;
    // The "not duplicates" file. Without one no decision is honoured.
    std::optional<std::string> notDuplicates;
    // The saved reviews file. With one (and a review asked for, over
    // folders), the marks and reviewed groups saved for the same folders and
    // mode are taken back.
    std::optional<std::string> savedReviews;
    // Absent for a listing that nobody reviews (the report, `catalog scan`):
    // then no faces are read and no review session is made.
    std::optional<ReviewRules> review;
};

} // namespace brevant
