#include "FaceDetector.hpp"

#include "engine/platform/OpenCvImage.hpp"

#include <algorithm>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>
#include <string>

namespace brevant::platform {

namespace {

const std::string kCascades = std::string(BREVANT_OPENCV_DATA) + "/haarcascades/";

struct Cascades {
    cv::CascadeClassifier face;
    cv::CascadeClassifier openEye;
    cv::CascadeClassifier smile;
    bool loaded = false;

    Cascades() {
        loaded = face.load(kCascades + "haarcascade_frontalface_alt2.xml") &&
                 openEye.load(kCascades + "haarcascade_eye_tree_eyeglasses.xml") &&
                 smile.load(kCascades + "haarcascade_smile.xml");
    }
};

Cascades& cascadesOfThisThread() {
    // We run our own workers; OpenCV's threads on top would only compete.
    static const bool sequential = [] {
        cv::setNumThreads(0);
        return true;
    }();
    (void)sequential;
    thread_local Cascades cascades;
    return cascades;
}

// The smallest face, in pixels, the face search needs to see.
constexpr double kSmallestSearchedFace = 40.0;

// Faces are judged at one size, so that small faces in group photos still
// give the eye and smile detectors enough pixels.
constexpr int kFaceSide = 200;

// An open eye found in this part of the face.
// The open-eye detector is asked leniently (one hit is enough): a closed eye
// gives no hit at all, while an open one in a small face may give only one.
bool eyeOpenIn(Cascades& cascades, const cv::Mat& face, const cv::Rect& part) {
    std::vector<cv::Rect> eyes;
    cascades.openEye.detectMultiScale(face(part), eyes, 1.05, 1, 0, cv::Size(18, 18),
                                      cv::Size(part.width, part.height));
    return !eyes.empty();
}

// The smile detector fires on any mouth unless it is asked for many
// overlapping hits.
bool smilingIn(Cascades& cascades, const cv::Mat& face, const cv::Rect& mouth) {
    std::vector<cv::Rect> smiles;
    cascades.smile.detectMultiScale(face(mouth), smiles, 1.1, 60, 0, cv::Size(50, 20));
    return !smiles.empty();
}

DetectedFace judge(Cascades& cascades, const cv::Mat& grey, const cv::Rect& box) {
    DetectedFace result{box.x, box.y, box.width, box.height};
    cv::Mat face;
    cv::resize(grey(box), face, cv::Size(kFaceSide, kFaceSide), 0, 0, cv::INTER_LINEAR);
    // Eyes sit in the upper part of the box, one in each half.
    constexpr int kEyesTop = kFaceSide / 6;
    constexpr int kEyesHeight = kFaceSide * 2 / 5;
    constexpr int kHalf = kFaceSide / 2;
    result.leftEyeClosed = !eyeOpenIn(cascades, face, {0, kEyesTop, kHalf, kEyesHeight});
    result.rightEyeClosed = !eyeOpenIn(cascades, face, {kHalf, kEyesTop, kHalf, kEyesHeight});
    constexpr int kMouthTop = kFaceSide * 13 / 20;
    result.smiling = smilingIn(cascades, face, {0, kMouthTop, kFaceSide, kFaceSide - kMouthTop});
    return result;
}

} // namespace

std::optional<std::vector<DetectedFace>> FaceDetector::detect(const DecodedImage& image,
                                                              int minWidth) {
    Cascades& cascades = cascadesOfThisThread();
    auto pixels = openCvImage(image);
    if (!cascades.loaded || !pixels) {
        return std::nullopt;
    }
    try {
        cv::Mat grey;
        if (pixels->channels() == 1) {
            grey = *pixels;
        } else {
            cv::cvtColor(*pixels, grey, cv::COLOR_BGR2GRAY);
        }
        cv::equalizeHist(grey, grey);
        // Faces are looked for on a copy just big enough for the smallest
        // face wanted, which is far quicker; eyes and smiles are then judged
        // on the picture itself.
        double scale = std::min(1.0, kSmallestSearchedFace / std::max(1.0, double(minWidth)));
        cv::Mat searched = grey;
        if (scale < 1.0) {
            cv::resize(grey, searched, cv::Size(), scale, scale, cv::INTER_AREA);
        }
        std::vector<cv::Rect> faces;
        int smallest = std::max(24, static_cast<int>(minWidth * scale));
        cascades.face.detectMultiScale(searched, faces, 1.1, 4, 0, cv::Size(smallest, smallest));
        std::vector<DetectedFace> result;
        result.reserve(faces.size());
        cv::Rect whole(0, 0, grey.cols, grey.rows);
        for (const auto& found : faces) {
            cv::Rect face(static_cast<int>(found.x / scale), static_cast<int>(found.y / scale),
                          static_cast<int>(found.width / scale),
                          static_cast<int>(found.height / scale));
            result.push_back(judge(cascades, grey, face & whole));
        }
        return result;
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
