#pragma once

#include <cstdint>
#include <vector>

namespace brevant::platform {

// Decoded 8-bit pixels, rows packed, bands interleaved (1 grey, 3 sRGB).
struct PixelBuffer {
    int width = 0;
    int height = 0;
    int bands = 0;
    std::vector<std::uint8_t> pixels;

    [[nodiscard]] bool isValid() const {
        return width > 0 && height > 0 && (bands == 1 || bands == 3) &&
               pixels.size() == static_cast<std::size_t>(width) * height * bands;
    }
};

} // namespace brevant::platform
