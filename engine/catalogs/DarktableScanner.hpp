#pragma once

#include "engine/catalogs/DarktableCatalog.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanResult.hpp"

#include <string>
#include <vector>

namespace brevant {

// Looks for identical copies among the files a darktable library lists,
// and only those; a file with several versions is one photo.
struct DarktableScanner {
    // Usable files are those that exist and whose versions carry no tag of
    // Brevant's yet (already marked). Every picture the exact matcher
    // returns carries its darktable reference; missing files become skipped
    // files.
    [[nodiscard]] static ScanResult scan(const DarktableCatalog& catalog, bool keepPictures,
                                         const CancellationFlag& cancel,
                                         const ExactMatcher::Progress& progress);

    [[nodiscard]] static bool isUsable(const DarktablePhoto& photo);
    // The paths of the files already tagged.
    [[nodiscard]] static std::vector<std::string> alreadyMarked(const DarktableCatalog& catalog);

    [[nodiscard]] static const std::string& missingSentence();
};

} // namespace brevant
