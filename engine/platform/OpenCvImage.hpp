#pragma once

// Decoded pictures as OpenCV sees them, for the platform layer's own files.

#include "engine/platform/DecodedImage.hpp"

#include <opencv2/core.hpp>
#include <optional>

namespace brevant::platform {

// The picture's pixels as an OpenCV matrix in OpenCV's channel order (BGR or
// grey), copied; nothing when the picture holds no usable pixels.
[[nodiscard]] std::optional<cv::Mat> openCvImage(const DecodedImage& image);

// The picture in 8-bit grey, Rec. 601 weights on the encoded values, rounded.
[[nodiscard]] std::optional<cv::Mat> greyOpenCvImage(const DecodedImage& image);

} // namespace brevant::platform
