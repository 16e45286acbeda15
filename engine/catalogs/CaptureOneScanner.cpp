#include "CaptureOneScanner.hpp"

#include "engine/catalogs/CatalogScan.hpp"

#include <algorithm>

namespace brevant {

bool CaptureOneScanner::isTaggedRed(const CaptureOnePhoto& photo) {
    return std::ranges::find(photo.ref.colorTags, CaptureOneCatalog::kRed) !=
           photo.ref.colorTags.end();
}

bool CaptureOneScanner::isUsable(const CaptureOnePhoto& photo) {
    return photo.exists && !photo.isTrashed && !isTaggedRed(photo);
}

ScanResult CaptureOneScanner::scan(const CaptureOneCatalog& catalog, bool keepPictures,
                                   const CancellationFlag& cancel,
                                   const ExactMatcher::Progress& progress) {
    ScanResult result =
        CatalogScan::photos<CaptureOneScanner>(catalog, keepPictures, cancel, progress);
    result.captureOneRed = static_cast<int>(alreadyMarked(catalog).size());
    return result;
}

std::vector<std::string> CaptureOneScanner::alreadyMarked(const CaptureOneCatalog& catalog) {
    std::vector<std::string> paths;
    for (const auto& photo : catalog.photos) {
        if (!photo.isTrashed && isTaggedRed(photo)) {
            paths.push_back(photo.path);
        }
    }
    return paths;
}

const std::string& CaptureOneScanner::missingSentence() {
    static const std::string text =
        "Capture One lists it, but the file is not where the catalog says.";
    return text;
}

} // namespace brevant
