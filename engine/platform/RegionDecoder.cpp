#include "RegionDecoder.hpp"

#include "engine/platform/VipsPixels.hpp"
#include "engine/platform/VipsRuntime.hpp"
#include "engine/support/CameraRawExtensions.hpp"
#include "engine/support/PathNames.hpp"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

namespace brevant::platform {

using vips::VImage;

namespace {

// The whole pixels that cover [from, from + length) of `side`.
std::pair<int, int> span(double from, double length, int side) {
    double start = std::clamp(from, 0.0, 1.0) * side;
    double end = std::clamp(from + length, 0.0, 1.0) * side;
    int first = std::clamp(static_cast<int>(std::floor(start)), 0, side);
    int last = std::clamp(static_cast<int>(std::ceil(end)), first, side);
    return {first, last - first};
}

} // namespace

std::optional<PictureRegion> RegionDecoder::decode(const std::string& path, double left, double top,
                                                   double width, double height) {
    std::string name = PathNames::lastComponent(path);
    if (isRawExtension(PathNames::asciiLowercased(PathNames::extension(name))) ||
        !VipsRuntime::ensureStarted()) {
        return std::nullopt;
    }
    try {
        VImage image = VImage::new_from_file(path.c_str(),
                                             VImage::option()->set("access", VIPS_ACCESS_RANDOM));
        image = image.autorot();
        auto [x, w] = span(left, width, image.width());
        auto [y, h] = span(top, height, image.height());
        if (w < 1 || h < 1 || static_cast<long long>(w) * h > kMaxPixels) {
            return std::nullopt;
        }
        std::optional<DecodedImage> pixels = plainDecodedImage(image.extract_area(x, y, w, h));
        if (!pixels) {
            return std::nullopt;
        }
        return PictureRegion{.pixels = *pixels,
                             .left = x,
                             .top = y,
                             .fullWidth = image.width(),
                             .fullHeight = image.height()};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
