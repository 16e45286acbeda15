#pragma once

#include "engine/scan/PhotoAsset.hpp"
#include "engine/similarity/ImageFeatures.hpp"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

struct DatedPicture {
    int index = 0;
    double seconds = 0; // capture time, seconds since 2001
};

// The pictures that have a capture date, by folder, each folder's in time
// order (ties by index). A picture without a date cannot be placed in time.
[[nodiscard]] std::map<std::string, std::vector<DatedPicture>>
capturesByFolder(const std::vector<PhotoAsset>& pictures,
                 const std::vector<std::optional<ImageFeatures>>& features);

} // namespace brevant
