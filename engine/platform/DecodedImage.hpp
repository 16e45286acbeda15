#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace brevant::platform {

// An upright picture decoded into memory: 8-bit samples, grey or RGB, no
// alpha. Its pixels stay inside the platform layer, so the measuring logic
// never depends on the imaging library's types.
class DecodedImage {
public:
    struct Pixels;

    explicit DecodedImage(std::shared_ptr<const Pixels> pixels);

    // Rows of 8-bit samples with 1 (grey), 3 (RGB) or 4 (RGBA) per pixel, as
    // another source of pixels supplies them; alpha is laid over black.
    // Nothing when the sizes do not fit the samples.
    [[nodiscard]] static std::optional<DecodedImage>
    fromPixels(std::span<const std::uint8_t> samples, int width, int height, int bands);

    [[nodiscard]] int width() const;
    [[nodiscard]] int height() const;
    // The pixels as 8-bit RGB, three samples per pixel, rows top to bottom
    // with no padding, for a window to draw; empty when libvips fails.
    [[nodiscard]] std::vector<std::uint8_t> rgbSamples() const;

    [[nodiscard]] const Pixels& pixels() const { return *pixels_; }

private:
    std::shared_ptr<const Pixels> pixels_;
};

} // namespace brevant::platform
