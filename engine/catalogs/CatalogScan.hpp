#pragma once

#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanResult.hpp"

#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

namespace brevant {

// The part that the Lightroom Classic and Capture One scans share: the exact
// matcher over the catalog's folders, admitting only the photos the catalog
// offers, then each picture given what the catalog knows of it.
struct CatalogScan {
    using Paths = std::unordered_set<std::string>;
    // Sets the catalog's reference on a picture whose path is usable.
    using Annotate = std::function<void(PhotoAsset&)>;

    // Only roots that hold a usable photo are walked (a root whose photos
    // are all missing or excluded holds nothing to compare, and a root of
    // another computer would only be refused), and a root inside another is
    // walked once, as part of the outer one.
    [[nodiscard]] static std::vector<std::string> rootsToWalk(const std::vector<std::string>& roots,
                                                              const Paths& usable);

    [[nodiscard]] static ScanResult run(const std::vector<std::string>& roots, Paths usable,
                                        bool keepPictures, const CancellationFlag& cancel,
                                        const ExactMatcher::Progress& progress,
                                        const Annotate& annotate);

    // Adds a photo the catalog lists but whose file is not there.
    static void addMissing(ScanResult& result, const std::string& path,
                           const std::string& sentence);
};

} // namespace brevant
