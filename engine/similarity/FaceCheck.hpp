#pragma once

namespace brevant {

// Eyes and smiles in the faces of a photo. The detector itself comes later;
// these constants are shared with the feature cache and the decoder now.
struct FaceCheck {
    // Longest side, in pixels, of the picture given to the face detector.
    static constexpr int renditionSize = 1600; // NOLINT(readability-identifier-naming): shared name
    // Stored in every reading; the feature cache drops readings of another
    // revision so that only the face check is repeated.
    static constexpr int revision = 1; // NOLINT(readability-identifier-naming): shared name
};

} // namespace brevant
