#include "ShotwellScanner.hpp"

#include "engine/catalogs/CatalogScan.hpp"

namespace brevant {

bool ShotwellScanner::isUsable(const ShotwellPhoto& photo) {
    return photo.exists && !photo.isTrashed && !photo.isMarked;
}

ScanResult ShotwellScanner::scan(const ShotwellCatalog& catalog, bool keepPictures,
                                 const CancellationFlag& cancel,
                                 const ExactMatcher::Progress& progress) {
    return CatalogScan::photos<ShotwellScanner>(catalog, keepPictures, cancel, progress);
}

std::vector<std::string> ShotwellScanner::alreadyMarked(const ShotwellCatalog& catalog) {
    std::vector<std::string> paths;
    for (const auto& photo : catalog.photos) {
        if (!photo.isTrashed && photo.isMarked) {
            paths.push_back(photo.path);
        }
    }
    return paths;
}

const std::string& ShotwellScanner::missingSentence() {
    static const std::string text =
        "Shotwell lists it, but the file is not where the library says.";
    return text;
}

} // namespace brevant
