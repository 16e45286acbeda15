#pragma once

#include "engine/catalogs/CaptureOneCatalog.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanResult.hpp"

#include <string>
#include <vector>

namespace brevant {

// Looks for identical copies among the files a Capture One catalog lists,
// and only those.
struct CaptureOneScanner {
    // Usable images are those whose file exists, that are not in Capture
    // One's Trash and that carry no Red tag on any variant (already marked
    // for deletion). Every picture the exact matcher returns carries its
    // Capture One reference; missing images become skipped files, and
    // `captureOneRed` counts the images outside the Trash already tagged Red.
    [[nodiscard]] static ScanResult scan(const CaptureOneCatalog& catalog, bool keepPictures,
                                         const CancellationFlag& cancel,
                                         const ExactMatcher::Progress& progress);

    [[nodiscard]] static bool isUsable(const CaptureOnePhoto& photo);
    [[nodiscard]] static bool isTaggedRed(const CaptureOnePhoto& photo);
    // The paths of the images outside the Trash already tagged Red, which
    // `captureOneRed` counts.
    [[nodiscard]] static std::vector<std::string> alreadyMarked(const CaptureOneCatalog& catalog);

    [[nodiscard]] static const std::string& missingSentence();
};

} // namespace brevant
