#include "DigikamScanner.hpp"

#include "engine/catalogs/CatalogScan.hpp"

namespace brevant {

bool DigikamScanner::isUsable(const DigikamPhoto& photo) {
    return photo.exists && !photo.isTagged;
}

ScanResult DigikamScanner::scan(const DigikamCatalog& catalog, bool keepPictures,
                                const CancellationFlag& cancel,
                                const ExactMatcher::Progress& progress) {
    ScanResult result =
        CatalogScan::photos<DigikamScanner>(catalog, keepPictures, cancel, progress);
    for (const auto& photo : catalog.notConnected()) {
        CatalogScan::addMissing(result, photo.path, notConnectedSentence());
    }
    return result;
}

std::vector<std::string> DigikamScanner::alreadyMarked(const DigikamCatalog& catalog) {
    std::vector<std::string> paths;
    for (const auto& photo : catalog.photos) {
        if (photo.isTagged && !photo.notConnected) {
            paths.push_back(photo.path);
        }
    }
    return paths;
}

const std::string& DigikamScanner::missingSentence() {
    static const std::string text = "digiKam lists it, but the file is not where the library says.";
    return text;
}

const std::string& DigikamScanner::notConnectedSentence() {
    static const std::string text =
        "digiKam lists it on a drive that is not connected, so it was not compared.";
    return text;
}

} // namespace brevant
