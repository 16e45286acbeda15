#include "DecodedImage.hpp"

#include "engine/platform/VipsPixels.hpp"
#include "engine/platform/VipsRuntime.hpp"

#include <cstddef>
#include <exception>
#include <utility>

namespace brevant::platform {

using vips::VImage;

DecodedImage::DecodedImage(std::shared_ptr<const Pixels> pixels)
    : pixels_(std::move(pixels)) {}

int DecodedImage::width() const {
    return pixels_->image.width();
}

int DecodedImage::height() const {
    return pixels_->image.height();
}

std::vector<std::uint8_t> DecodedImage::rgbSamples() const {
    try {
        VImage image = pixels_->image;
        if (image.bands() == 1) {
            image = image.bandjoin({image, image});
        }
        std::size_t length = 0;
        void* memory = image.write_to_memory(&length);
        std::vector<std::uint8_t> samples(static_cast<std::uint8_t*>(memory),
                                          static_cast<std::uint8_t*>(memory) + length);
        g_free(memory);
        return samples;
    } catch (const std::exception&) {
        return {};
    }
}

std::optional<DecodedImage> DecodedImage::fromPixels(std::span<const std::uint8_t> samples,
                                                     int width, int height, int bands) {
    bool knownBands = bands == 1 || bands == 3 || bands == 4;
    if (!knownBands || width < 1 || height < 1 ||
        samples.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                              static_cast<std::size_t>(bands)) {
        return std::nullopt;
    }
    if (!VipsRuntime::ensureStarted()) {
        return std::nullopt;
    }
    try {
        // libvips only borrows the samples; plainDecodedImage copies them
        // before this returns.
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
        auto* data = const_cast<std::uint8_t*>(samples.data());
        VImage image =
            VImage::new_from_memory(data, samples.size(), width, height, bands, VIPS_FORMAT_UCHAR);
        image = image.copy(VImage::option()->set(
            "interpretation", bands == 1 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB));
        return plainDecodedImage(image);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::optional<DecodedImage> plainDecodedImage(VImage image) {
    try {
        if (image.has_alpha()) {
            // Transparent parts count as black, as when drawn into a fresh
            // bitmap.
            image = image.flatten(VImage::option()->set("background", std::vector<double>{0.0}));
        }
        VipsInterpretation kind = image.interpretation();
        bool grey = image.bands() == 1 || kind == VIPS_INTERPRETATION_B_W ||
                    kind == VIPS_INTERPRETATION_GREY16;
        image = image.colourspace(grey ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB);
        if (image.format() == VIPS_FORMAT_USHORT) {
            image = image.cast(VIPS_FORMAT_UCHAR, VImage::option()->set("shift", true));
        } else if (image.format() != VIPS_FORMAT_UCHAR) {
            image = image.cast(VIPS_FORMAT_UCHAR);
        }
        // Decoding happens here, once; everything later reads memory.
        image = image.copy_memory();
        return DecodedImage(
            std::make_shared<const DecodedImage::Pixels>(DecodedImage::Pixels{std::move(image)}));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
