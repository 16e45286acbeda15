#pragma once

#include "engine/platform/DecodedImage.hpp"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace brevant::platform {

// A square of grey values 0...1, row by row.
struct GreySquare {
    int side = 0;
    std::vector<float> values;

    [[nodiscard]] float at(int row, int column) const {
        return values[static_cast<std::size_t>(row) * static_cast<std::size_t>(side) +
                      static_cast<std::size_t>(column)];
    }

    friend bool operator==(const GreySquare&, const GreySquare&) = default;
};

// Renders pictures as small grey squares for hashing and measuring.
struct GreyRendering {
    // The whole picture drawn into each side x side square (the aspect ratio
    // is not kept), 8-bit Rec. 601 grey averaged over each square's area,
    // each byte as byte / 255.
    // The squares come in the order of `sides`; nothing when any rendering
    // fails.
    [[nodiscard]] static std::optional<std::vector<GreySquare>> squares(const DecodedImage& image,
                                                                        std::span<const int> sides);
};

} // namespace brevant::platform
