#include "OpenCvImage.hpp"

#include "engine/platform/VipsPixels.hpp"

#include <opencv2/imgproc.hpp>

namespace brevant::platform {

namespace {

// The decoded image, already in memory, as a matrix that reads it in place;
// callers convert it into OpenCV's own copy before it is used.
std::optional<cv::Mat> borrowedImage(const DecodedImage& image) {
    const vips::VImage& pixels = image.pixels().image;
    int bands = pixels.bands();
    if (pixels.format() != VIPS_FORMAT_UCHAR || (bands != 1 && bands != 3) || image.width() < 1 ||
        image.height() < 1) {
        return std::nullopt;
    }
    const void* data = pixels.data();
    return cv::Mat(image.height(), image.width(), CV_8UC(bands),
                   const_cast<void*>(data)); // NOLINT(cppcoreguidelines-pro-type-const-cast)
}

std::optional<cv::Mat> converted(const DecodedImage& image, int colourConversion) {
    std::optional<cv::Mat> borrowed = borrowedImage(image);
    if (!borrowed) {
        return std::nullopt;
    }
    try {
        cv::Mat copy;
        if (borrowed->channels() == 3) {
            cv::cvtColor(*borrowed, copy, colourConversion);
        } else {
            copy = borrowed->clone();
        }
        return copy;
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

} // namespace

std::optional<cv::Mat> openCvImage(const DecodedImage& image) {
    return converted(image, cv::COLOR_RGB2BGR);
}

std::optional<cv::Mat> greyOpenCvImage(const DecodedImage& image) {
    return converted(image, cv::COLOR_RGB2GRAY);
}

} // namespace brevant::platform
