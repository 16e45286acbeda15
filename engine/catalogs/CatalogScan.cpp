#include "CatalogScan.hpp"

#include "engine/scan/PathRules.hpp"

#include <algorithm>

namespace brevant {

std::vector<std::string> CatalogScan::rootsToWalk(const std::vector<std::string>& roots,
                                                  const Paths& usable) {
    // Each usable path marks the roots above it: folders up to "/".
    std::unordered_set<std::string> known(roots.begin(), roots.end());
    std::unordered_set<std::string> holdingSet;
    for (const auto& path : usable) {
        for (std::string folder = PathRules::parentFolder(path); !folder.empty();
             folder = PathRules::parentFolder(folder)) {
            if (known.contains(folder)) {
                holdingSet.insert(folder);
            }
            if (folder == "/") {
                break;
            }
        }
    }
    std::vector<std::string> holding(holdingSet.begin(), holdingSet.end());
    std::ranges::sort(holding);
    std::vector<std::string> walked;
    for (auto& root : holding) {
        bool inside = std::ranges::any_of(
            walked, [&](const std::string& outer) { return PathRules::isInside(root, outer); });
        if (!inside) {
            walked.push_back(std::move(root));
        }
    }
    return walked;
}

ScanResult CatalogScan::run(const std::vector<std::string>& roots, Paths usable, bool keepPictures,
                            const CancellationFlag& cancel, const ExactMatcher::Progress& progress,
                            const Annotate& annotate) {
    auto walked = rootsToWalk(roots, usable);
    ScanResult result =
        ExactMatcher::scan(walked, keepPictures, std::move(usable), cancel, progress);
    for (auto& group : result.groups) {
        std::ranges::for_each(group.members, annotate);
    }
    std::ranges::for_each(result.pictures, annotate);
    return result;
}

void CatalogScan::addMissing(ScanResult& result, const std::string& path,
                             const std::string& sentence) {
    result.skipped.push_back({path, SkipReason::unreadable, sentence});
}

} // namespace brevant
