#pragma once

#include "engine/catalogs/DigikamCatalog.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanResult.hpp"

#include <string>
#include <vector>

namespace brevant {

// Looks for identical copies among the files a digiKam library lists, and
// only those.
struct DigikamScanner {
    // Usable items are those whose file is there and that do not carry the
    // duplicates tag yet. Missing items, and those on a drive that is not
    // connected, become skipped files, each with its own sentence.
    [[nodiscard]] static ScanResult scan(const DigikamCatalog& catalog, bool keepPictures,
                                         const CancellationFlag& cancel,
                                         const ExactMatcher::Progress& progress);

    [[nodiscard]] static bool isUsable(const DigikamPhoto& photo);
    // The paths of the items already tagged, on a connected drive.
    [[nodiscard]] static std::vector<std::string> alreadyMarked(const DigikamCatalog& catalog);

    [[nodiscard]] static const std::string& missingSentence();
    [[nodiscard]] static const std::string& notConnectedSentence();
};

} // namespace brevant
