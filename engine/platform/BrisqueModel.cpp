#include "BrisqueModel.hpp"

#include <opencv2/imgproc.hpp>
#include <opencv2/quality.hpp>
#include <string>

namespace brevant::platform {

namespace {

const std::string kModel = std::string(BREVANT_OPENCV_DATA) + "/quality/brisque_model_live.yml";
const std::string kRange = std::string(BREVANT_OPENCV_DATA) + "/quality/brisque_range_live.yml";

// The model keeps working buffers, so each thread has its own.
cv::Ptr<cv::quality::QualityBRISQUE> modelOfThisThread() {
    thread_local cv::Ptr<cv::quality::QualityBRISQUE> model = [] {
        try {
            return cv::quality::QualityBRISQUE::create(kModel, kRange);
        } catch (const cv::Exception&) {
            return cv::Ptr<cv::quality::QualityBRISQUE>();
        }
    }();
    return model;
}

} // namespace

std::optional<double> BrisqueModel::score(const PixelBuffer& image) {
    if (!image.isValid()) {
        return std::nullopt;
    }
    auto model = modelOfThisThread();
    if (!model) {
        return std::nullopt;
    }
    try {
        int type = image.bands == 1 ? CV_8UC1 : CV_8UC3;
        // OpenCV only reads the pixels here.
        cv::Mat pixels(image.height, image.width, type,
                       const_cast<std::uint8_t*>(image.pixels.data())); // NOLINT
        cv::Mat bgr;
        if (image.bands == 3) {
            cv::cvtColor(pixels, bgr, cv::COLOR_RGB2BGR);
        } else {
            bgr = pixels;
        }
        cv::Scalar result = model->compute(bgr);
        return result[0];
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
