#include "LightroomScanner.hpp"

#include "engine/catalogs/CatalogScan.hpp"

#include <unordered_map>

namespace brevant {

bool LightroomScanner::isUsable(const LightroomPhoto& photo) {
    return photo.exists && photo.ref.pick >= 0;
}

ScanResult LightroomScanner::scan(const LightroomCatalog& catalog, bool keepPictures,
                                  const CancellationFlag& cancel,
                                  const ExactMatcher::Progress& progress) {
    std::unordered_map<std::string, LightroomRef> refs;
    CatalogScan::Paths usable;
    for (const auto& photo : catalog.photos) {
        if (isUsable(photo)) {
            // Two photos on one file: the first, in catalog order, speaks for it.
            refs.try_emplace(photo.path, photo.ref);
            usable.insert(photo.path);
        }
    }
    auto annotate = [&](PhotoAsset& picture) {
        if (auto it = refs.find(picture.path); it != refs.end()) {
            picture.lightroom = it->second;
        }
    };
    ScanResult result = CatalogScan::run(catalog.rootFolders, std::move(usable), keepPictures,
                                         cancel, progress, annotate);
    for (const auto& photo : catalog.missing()) {
        CatalogScan::addMissing(result, photo.path, missingSentence());
    }
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
