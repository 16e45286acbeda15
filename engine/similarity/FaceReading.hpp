#pragma once

#include "engine/support/PlistValue.hpp"

#include <optional>

namespace brevant {

// Faces big enough to judge in one photo, and how many of them have an eye
// closed or smile.
struct FaceReading {
    int faces = 0;
    int eyesClosed = 0;
    int smiling = 0;
    int revision = 0;

    friend bool operator==(const FaceReading&, const FaceReading&) = default;
};

// Stored form: a dictionary with the keys "faces", "eyesClosed", "smiling",
// "revision".
[[nodiscard]] PlistValue toPlist(const FaceReading& reading);
[[nodiscard]] std::optional<FaceReading> faceReadingFromPlist(const PlistValue& value);

} // namespace brevant
