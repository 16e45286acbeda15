#include "FaceDetector.hpp"

#include "engine/platform/OpenCvImage.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>
#include <string>

namespace brevant::platform {

namespace {

const std::string kCascades = std::string(BREVANT_OPENCV_DATA) + "/haarcascades/";
const std::string kLbpCascades = std::string(BREVANT_OPENCV_DATA) + "/lbpcascades/";

struct Cascades {
    cv::CascadeClassifier face;
    // A face detector of another kind (local binary patterns), whose false
    // hits fall elsewhere than the Haar cascade's.
    cv::CascadeClassifier secondFace;
    cv::CascadeClassifier openEye;
    cv::CascadeClassifier smile;
    bool loaded = false;

    Cascades() {
        loaded = face.load(kCascades + "haarcascade_frontalface_alt2.xml") &&
                 secondFace.load(kLbpCascades + "lbpcascade_frontalface_improved.xml") &&
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

// Below this mean saturation (of 255) a picture counts as black and white,
// where skin cannot be told by its colour.
constexpr double kColourSaturation = 25.0;

// The share of the middle of a face box that must be skin-coloured. Faces
// measured 0.74 and more; flowers, walls and car seats that the face
// cascade took for faces 0.53 and less.
constexpr double kSkinShare = 0.6;

// Skin in YCrCb: a wide band of red and blue chroma that holds light and
// dark skin alike, whatever the brightness.
bool mostlySkin(const cv::Mat& yCrCb, const cv::Rect& box) {
    cv::Rect middle(box.x + box.width / 5, box.y + box.height / 5, box.width * 3 / 5,
                    box.height * 3 / 5);
    if (middle.area() <= 0) {
        return false;
    }
    cv::Mat skin;
    cv::inRange(yCrCb(middle), cv::Scalar(0, 133, 77), cv::Scalar(255, 173, 127), skin);
    return cv::countNonZero(skin) >= kSkinShare * middle.area();
}

// The second detector finds a face of about the same size in about the
// same place, looking at the box and a margin around it.
bool secondDetectorAgrees(Cascades& cascades, const cv::Mat& grey, const cv::Rect& box) {
    int margin = box.width / 3;
    cv::Rect region =
        cv::Rect(box.x - margin, box.y - margin, box.width + 2 * margin, box.height + 2 * margin) &
        cv::Rect(0, 0, grey.cols, grey.rows);
    // The box is brought to 120 pixels, so every face is searched alike.
    double scale = 120.0 / box.width;
    cv::Mat scaled;
    cv::resize(grey(region), scaled, cv::Size(), scale, scale,
               scale < 1.0 ? cv::INTER_AREA : cv::INTER_LINEAR);
    std::vector<cv::Rect> hits;
    cascades.secondFace.detectMultiScale(scaled, hits, 1.05, 1, 0, cv::Size(70, 70),
                                         cv::Size(200, 200));
    return std::ranges::any_of(hits, [&](const cv::Rect& hit) {
        double x = region.x + (hit.x + hit.width / 2.0) / scale;
        double y = region.y + (hit.y + hit.height / 2.0) / scale;
        double width = hit.width / scale;
        return std::abs(x - (box.x + box.width / 2.0)) < box.width / 4.0 &&
               std::abs(y - (box.y + box.height / 2.0)) < box.height / 4.0 &&
               width > 0.6 * box.width && width < 1.6 * box.width;
    });
}

// The face cascade alone reads faces into flowers, leaves, walls and car
// seats, so each box is confirmed before it counts: in a colour picture most
// of its middle must be skin-coloured; in a black-and-white one, where
// colour says nothing, the second detector must find the face as well.
// Neither test looks at the eyes, so faces with closed eyes stay faces.
class FaceConfirmation {
public:
    FaceConfirmation(const cv::Mat& pixels, const cv::Mat& grey)
        : grey_(grey) {
        if (pixels.channels() != 3) {
            return;
        }
        cv::Mat hsv;
        cv::cvtColor(pixels, hsv, cv::COLOR_BGR2HSV);
        if (cv::mean(hsv)[1] >= kColourSaturation) {
            cv::cvtColor(pixels, yCrCb_, cv::COLOR_BGR2YCrCb);
        }
    }

    [[nodiscard]] bool confirms(Cascades& cascades, const cv::Rect& box) const {
        if (!yCrCb_.empty()) {
            return mostlySkin(yCrCb_, box);
        }
        return secondDetectorAgrees(cascades, grey_, box);
    }

private:
    cv::Mat grey_;
    cv::Mat yCrCb_; // empty for a black-and-white picture
};

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
            grey = pixels->clone();
        } else {
            cv::cvtColor(*pixels, grey, cv::COLOR_BGR2GRAY);
        }
        cv::equalizeHist(grey, grey);
        FaceConfirmation confirmation(*pixels, grey);
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
            face &= whole;
            if (face.width > 0 && face.height > 0 && confirmation.confirms(cascades, face)) {
                result.push_back(judge(cascades, grey, face));
            }
        }
        return result;
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
