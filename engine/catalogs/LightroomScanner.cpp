#include "LightroomScanner.hpp"

#include "engine/catalogs/CatalogScan.hpp"

namespace brevant {

bool LightroomScanner::isUsable(const LightroomPhoto& photo) {
    return photo.exists && photo.ref.pick >= 0;
}

ScanResult LightroomScanner::scan(const LightroomCatalog& catalog, bool keepPictures,
                                  const CancellationFlag& cancel,
                                  const ExactMatcher::Progress& progress) {
    ScanResult result =
        CatalogScan::photos<LightroomScanner>(catalog, keepPictures, cancel, progress);
    result.lightroomRejected = static_cast<int>(alreadyMarked(catalog).size());
    return result;
}

std::vector<std::string> LightroomScanner::alreadyMarked(const LightroomCatalog& catalog) {
    std::vector<std::string> paths;
    for (const auto& photo : catalog.photos) {
        if (photo.ref.pick < 0) {
            paths.push_back(photo.path);
        }
    }
    return paths;
}

const std::string& LightroomScanner::missingSentence() {
    static const std::string text =
        "Lightroom Classic lists it, but the file is not where the catalog says.";
    return text;
}

} // namespace brevant
