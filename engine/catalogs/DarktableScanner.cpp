#include "DarktableScanner.hpp"

#include "engine/catalogs/CatalogScan.hpp"

namespace brevant {

bool DarktableScanner::isUsable(const DarktablePhoto& photo) {
    return photo.exists && !photo.isTagged;
}

ScanResult DarktableScanner::scan(const DarktableCatalog& catalog, bool keepPictures,
                                  const CancellationFlag& cancel,
                                  const ExactMatcher::Progress& progress) {
    return CatalogScan::photos<DarktableScanner>(catalog, keepPictures, cancel, progress);
}

std::vector<std::string> DarktableScanner::alreadyMarked(const DarktableCatalog& catalog) {
    std::vector<std::string> paths;
    for (const auto& photo : catalog.photos) {
        if (photo.isTagged) {
            paths.push_back(photo.path);
        }
    }
    return paths;
}

const std::string& DarktableScanner::missingSentence() {
    static const std::string text =
        "darktable lists it, but the file is not where the library says.";
    return text;
}

} // namespace brevant
