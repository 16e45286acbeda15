#include "BrisqueModel.hpp"

#include "engine/platform/OpenCvImage.hpp"

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

std::optional<double> BrisqueModel::score(const DecodedImage& image) {
    auto model = modelOfThisThread();
    auto pixels = openCvImage(image);
    if (!model || !pixels) {
        return std::nullopt;
    }
    try {
        return model->compute(*pixels)[0];
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
