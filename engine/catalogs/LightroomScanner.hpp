#pragma once

#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanResult.hpp"

#include <string>
#include <vector>

namespace brevant {

// Looks for identical copies among the files a Lightroom Classic catalog
// lists, and only those.
struct LightroomScanner {
    // Usable photos are those whose file exists and that are not Rejected
    // (already on their way out in Lightroom). The exact matcher walks the
    // catalog's root folders admitting only the usable files; every picture
    // it returns carries its Lightroom reference. Missing photos become
    // skipped files, and `lightroomRejected` counts the Rejected photos.
    [[nodiscard]] static ScanResult scan(const LightroomCatalog& catalog, bool keepPictures,
                                         const CancellationFlag& cancel,
                                         const ExactMatcher::Progress& progress);

    [[nodiscard]] static bool isUsable(const LightroomPhoto& photo);
    // The paths of the Rejected photos, which `lightroomRejected` counts.
    [[nodiscard]] static std::vector<std::string> alreadyMarked(const LightroomCatalog& catalog);

    [[nodiscard]] static const std::string& missingSentence();
};

} // namespace brevant
