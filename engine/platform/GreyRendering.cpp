#include "GreyRendering.hpp"

#include "engine/platform/OpenCvImage.hpp"

#include <algorithm>
#include <cstddef>
#include <opencv2/imgproc.hpp>

namespace brevant::platform {

std::optional<std::vector<GreySquare>> GreyRendering::squares(const DecodedImage& image,
                                                              std::span<const int> sides) {
    if (sides.empty() || std::ranges::any_of(sides, [](int side) { return side < 1; })) {
        return std::nullopt;
    }
    // OpenCV's area resampling rather than a libvips pipeline: the squares
    // are tiny, and each libvips resize compiled its own vector code, which
    // cost more than the photo's whole measuring.
    std::optional<cv::Mat> grey = greyOpenCvImage(image);
    if (!grey) {
        return std::nullopt;
    }
    try {
        std::vector<GreySquare> result;
        result.reserve(sides.size());
        for (int side : sides) {
            cv::Mat drawn;
            cv::resize(*grey, drawn, cv::Size(side, side), 0, 0, cv::INTER_AREA);
            auto n = static_cast<std::size_t>(side);
            GreySquare square{side, std::vector<float>(n * n)};
            for (std::size_t y = 0; y < n; ++y) {
                const auto* row = drawn.ptr<std::uint8_t>(static_cast<int>(y));
                for (std::size_t x = 0; x < n; ++x) {
                    square.values[y * n + x] = static_cast<float>(row[x]) / 255.0F;
                }
            }
            result.push_back(std::move(square));
        }
        return result;
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
