#pragma once

#include "engine/platform/DecodedImage.hpp"
#include "engine/similarity/FaceReading.hpp"

#include <optional>
#include <string>

namespace brevant {

// Counts faces, closed eyes and smiles, and compares two photos by them.
struct FaceCheck {
    static constexpr int kRenditionSize = 1600;
    static constexpr double kMinFaceFraction = 0.05;
    // 2: faces are confirmed before they count, so readings of revision 1,
    // which held faces read into flowers and objects, are read again.
    static constexpr int kRevision = 2;

    // Faces big enough to judge in an upright picture; nothing when the
    // detector cannot run.
    [[nodiscard]] static std::optional<FaceReading> reading(const platform::DecodedImage& image);

    // The same for a file, decoded upright to at most kRenditionSize pixels
    // on its long side; nothing when it cannot be read as a picture.
    [[nodiscard]] static std::optional<FaceReading> reading(const std::string& path);

    // Shown beside the notes.
    [[nodiscard]] static const std::string& explanation();

    // -1 when a is better, 1 when b is, 0 when they cannot be told apart
    // (missing readings, no faces, or a different number of faces).
    [[nodiscard]] static int compareEyes(const std::optional<FaceReading>& a,
                                         const std::optional<FaceReading>& b);
    [[nodiscard]] static int compareSmiles(const std::optional<FaceReading>& a,
                                           const std::optional<FaceReading>& b);

    // A short note such as "All eyes open, 2 of 3 smiling"; nothing when no
    // face was big enough to judge.
    [[nodiscard]] static std::optional<std::string> notes(const FaceReading& reading);
};

} // namespace brevant
