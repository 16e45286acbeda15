#include "OpenCvImage.hpp"

#include "engine/platform/VipsPixels.hpp"

#include <opencv2/imgproc.hpp>

namespace brevant::platform {

std::optional<cv::Mat> openCvImage(const DecodedImage& image) {
    const vips::VImage& pixels = image.pixels().image;
    int bands = pixels.bands();
    if (pixels.format() != VIPS_FORMAT_UCHAR || (bands != 1 && bands != 3) || image.width() < 1 ||
        image.height() < 1) {
        return std::nullopt;
    }
    try {
        // The decoded image is already in memory; OpenCV reads it in place
        // and the conversion below makes OpenCV's own copy.
        const void* data = pixels.data();
        cv::Mat borrowed(image.height(), image.width(), CV_8UC(bands),
                         const_cast<void*>(data)); // NOLINT(cppcoreguidelines-pro-type-const-cast)
        cv::Mat converted;
        if (bands == 3) {
            cv::cvtColor(borrowed, converted, cv::COLOR_RGB2BGR);
        } else {
            converted = borrowed.clone();
        }
        return converted;
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
