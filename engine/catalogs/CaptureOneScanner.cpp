#include "CaptureOneScanner.hpp"

#include "engine/catalogs/CatalogScan.hpp"

#include <algorithm>
#include <unordered_map>

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
    std::unordered_map<std::string, CaptureOneRef> refs;
    CatalogScan::Paths usable;
    for (const auto& photo : catalog.photos) {
        if (isUsable(photo)) {
            // Two images on one file: the first, in catalog order, speaks for it.
            refs.try_emplace(photo.path, photo.ref);
            usable.insert(photo.path);
        }
    }
    auto annotate = [&](PhotoAsset& picture) {
        if (auto it = refs.find(picture.path); it != refs.end()) {
            picture.captureOne = it->second;
        }
    };
    ScanResult result = CatalogScan::run(catalog.rootFolders, std::move(usable), keepPictures,
                                         cancel, progress, annotate);
    for (const auto& photo : catalog.missing()) {
        CatalogScan::addMissing(result, photo.path, missingSentence());
    }
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
