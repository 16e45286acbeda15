#include "GreyRendering.hpp"

#include "engine/platform/VipsPixels.hpp"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>

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

VImage squareOf(const VImage& grey, int side) {
    VImage square = grey.resize(static_cast<double>(side) / grey.width(),
                                VImage::option()
                                    ->set("vscale", static_cast<double>(side) / grey.height())
                                    ->set("kernel", VIPS_KERNEL_LANCZOS3));
    if (square.width() != side || square.height() != side) {
        // Rounding of the scale can leave a pixel more or less; keep the
        // square exact by repeating or dropping the edge.
        square = square.embed(0, 0, side, side, VImage::option()->set("extend", VIPS_EXTEND_COPY));
    }
    return square.format() == VIPS_FORMAT_UCHAR ? square : square.cast(VIPS_FORMAT_UCHAR);
}

} // namespace

std::optional<std::vector<GreySquare>> GreyRendering::squares(const DecodedImage& image,
                                                              std::span<const int> sides) {
    if (sides.empty() || std::ranges::any_of(sides, [](int side) { return side < 1; })) {
        return std::nullopt;
    }
    try {
        // One grey conversion, held in memory, serves every square, and the
        // squares are laid side by side and computed in one pass: each pass
        // hands work to a libvips thread, and with several photos in flight
        // the waits cost more than the arithmetic.
        VImage grey = greyOf(image.pixels().image).copy_memory();
        int width = 0;
        for (int side : sides) {
            width += side;
        }
        VImage sheet = VImage::black(width, std::ranges::max(sides)).cast(VIPS_FORMAT_UCHAR);
        int left = 0;
        for (int side : sides) {
            sheet = sheet.insert(squareOf(grey, side), left, 0);
            left += side;
        }
        std::size_t size = 0;
        auto* bytes = static_cast<std::uint8_t*>(sheet.write_to_memory(&size));
        std::unique_ptr<std::uint8_t, decltype(&g_free)> owner(bytes, &g_free);
        auto stride = static_cast<std::size_t>(width);
        if (bytes == nullptr || size != stride * static_cast<std::size_t>(sheet.height())) {
            return std::nullopt;
        }
        std::vector<GreySquare> result;
        result.reserve(sides.size());
        std::size_t column = 0;
        for (int side : sides) {
            auto n = static_cast<std::size_t>(side);
            GreySquare square{side, std::vector<float>(n * n)};
            for (std::size_t y = 0; y < n; ++y) {
                const std::uint8_t* row = bytes + y * stride + column;
                for (std::size_t x = 0; x < n; ++x) {
                    square.values[y * n + x] = static_cast<float>(row[x]) / 255.0F;
                }
            }
            result.push_back(std::move(square));
            column += n;
        }
        return result;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
