#include "GreyRendering.hpp"

#include "engine/platform/VipsPixels.hpp"

#include <cstdint>
#include <exception>
#include <stdexcept>

namespace brevant::platform {

using vips::VImage;

namespace {

// Device grey: the Rec. 601 weights on the encoded values, rounded to bytes.
VImage greyOf(const VImage& image) {
    if (image.bands() == 1) {
        return image;
    }
    VImage weights = VImage::new_matrixv(3, 1, 0.299, 0.587, 0.114);
    return (image.recomb(weights) + 0.5).cast(VIPS_FORMAT_UCHAR);
}

GreySquare squareOf(const VImage& grey, int side) {
    VImage square = grey.resize(static_cast<double>(side) / grey.width(),
                                VImage::option()
                                    ->set("vscale", static_cast<double>(side) / grey.height())
                                    ->set("kernel", VIPS_KERNEL_LANCZOS3));
    if (square.width() != side || square.height() != side) {
        // Rounding of the scale can leave a pixel more or less; keep the
        // square exact by repeating or dropping the edge.
        square = square.embed(0, 0, side, side, VImage::option()->set("extend", VIPS_EXTEND_COPY));
    }
    if (square.format() != VIPS_FORMAT_UCHAR) {
        square = square.cast(VIPS_FORMAT_UCHAR);
    }
    std::size_t size = 0;
    auto* bytes = static_cast<std::uint8_t*>(square.write_to_memory(&size));
    GreySquare result;
    result.side = side;
    result.values.resize(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
    if (bytes == nullptr || size != result.values.size()) {
        g_free(bytes);
        throw std::runtime_error("grey rendering has the wrong size");
    }
    for (std::size_t i = 0; i < size; ++i) {
        result.values[i] = static_cast<float>(bytes[i]) / 255.0F;
    }
    g_free(bytes);
    return result;
}

} // namespace

std::optional<std::vector<GreySquare>> GreyRendering::squares(const DecodedImage& image,
                                                              std::span<const int> sides) {
    try {
        // One grey conversion, held in memory, serves every square.
        VImage grey = greyOf(image.pixels().image).copy_memory();
        std::vector<GreySquare> result;
        result.reserve(sides.size());
        for (int side : sides) {
            if (side < 1) {
                return std::nullopt;
            }
            result.push_back(squareOf(grey, side));
        }
        return result;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
