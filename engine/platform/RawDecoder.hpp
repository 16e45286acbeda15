#pragma once

#include "engine/platform/ImageDecoder.hpp"

#include <optional>
#include <string>

namespace brevant::platform {

// Camera RAW through LibRaw: the embedded preview when it is big enough,
// else a half-size decode, turned upright by the RAW's own orientation.
struct RawDecoder {
    [[nodiscard]] static std::optional<DecodedPicture> decode(const std::string& path, int maxSide);

    // LibRaw's turn code (bit 4 exchanges the axes, bit 2 flips rows, bit 1
    // flips columns) as the EXIF orientation tag that means the same.
    [[nodiscard]] static int orientationOfFlip(int flip);
};

} // namespace brevant::platform
