#include "FaceCheck.hpp"

#include "engine/platform/FaceDetector.hpp"
#include "engine/platform/ImageDecoder.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace brevant {

namespace {

// The same people are assumed only when the face counts agree.
bool samePeople(const FaceReading& a, const FaceReading& b) {
    return a.faces > 0 && a.faces == b.faces;
}

} // namespace

std::optional<FaceReading> FaceCheck::reading(const platform::DecodedImage& image) {
    double longest = std::max(image.width(), image.height());
    // Smaller faces are not looked for at all, so they count neither as open
    // nor as closed.
    int minWidth = static_cast<int>(std::ceil(kMinFaceFraction * longest));
    auto faces = platform::FaceDetector::detect(image, minWidth);
    if (!faces) {
        return std::nullopt;
    }
    FaceReading result{.revision = kRevision};
    for (const auto& face : *faces) {
        if (face.width < kMinFaceFraction * longest) {
            continue;
        }
        result.faces += 1;
        result.eyesClosed += (face.leftEyeClosed || face.rightEyeClosed) ? 1 : 0;
        result.smiling += face.smiling ? 1 : 0;
    }
    return result;
}

std::optional<FaceReading> FaceCheck::reading(const std::string& path) {
    auto decoded = platform::ImageDecoder::decode(path, kRenditionSize);
    if (!decoded) {
        return std::nullopt;
    }
    return reading(decoded->thumbnail);
}

const std::string& FaceCheck::explanation() {
    static const std::string text =
        "From OpenCV's face, eye and smile detectors, run on this computer. It counts open and "
        "closed eyes and smiles in faces big enough to judge, and keeps nothing about who anyone "
        "is. Someone looking down, wearing dark glasses or turned away can read as eyes closed.";
    return text;
}

int FaceCheck::compareEyes(const std::optional<FaceReading>& a,
                           const std::optional<FaceReading>& b) {
    if (!a || !b || !samePeople(*a, *b) || a->eyesClosed == b->eyesClosed) {
        return 0;
    }
    return a->eyesClosed < b->eyesClosed ? -1 : 1;
}

int FaceCheck::compareSmiles(const std::optional<FaceReading>& a,
                             const std::optional<FaceReading>& b) {
    if (!a || !b || !samePeople(*a, *b) || a->smiling == b->smiling) {
        return 0;
    }
    return a->smiling > b->smiling ? -1 : 1;
}

std::optional<std::string> FaceCheck::notes(const FaceReading& reading) {
    if (reading.faces <= 0) {
        return std::nullopt;
    }
    std::string eyes;
    if (reading.faces == 1) {
        eyes = reading.eyesClosed > 0 ? "Eyes closed or looking down" : "Eyes open";
    } else if (reading.eyesClosed == 0) {
        eyes = "All eyes open";
    } else {
        eyes = fmt::format("{} of {} with eyes closed or looking down", reading.eyesClosed,
                           reading.faces);
    }
    if (reading.smiling == 0) {
        return eyes;
    }
    if (reading.faces == 1) {
        return eyes + ", smiling";
    }
    return fmt::format("{}, {} of {} smiling", eyes, reading.smiling, reading.faces);
}

} // namespace brevant
