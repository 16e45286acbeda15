#include "CaptureTimeline.hpp"

#include <algorithm>

namespace brevant {

std::map<std::string, std::vector<DatedPicture>>
capturesByFolder(const std::vector<PhotoAsset>& pictures,
                 const std::vector<std::optional<ImageFeatures>>& features) {
    std::map<std::string, std::vector<DatedPicture>> byFolder;
    for (std::size_t i = 0; i < pictures.size() && i < features.size(); ++i) {
        const auto& measured = features[i];
        if (!measured || !measured->captureDate) {
            continue;
        }
        double seconds = measured->captureDate->secondsSinceReferenceDate;
        byFolder[pictures[i].folder()].push_back({static_cast<int>(i), seconds});
    }
    for (auto& [folder, dated] : byFolder) {
        std::ranges::sort(dated, [](const DatedPicture& x, const DatedPicture& y) {
            return x.seconds != y.seconds ? x.seconds < y.seconds : x.index < y.index;
        });
    }
    return byFolder;
}

} // namespace brevant
