#pragma once

#include "engine/similarity/FaceReading.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/PlistValue.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace brevant {

// A 256-bit detail hash as four words.
using DetailHash = std::array<std::uint64_t, 4>;

// One picture measured once for likeness and quality.
struct ImageFeatures {
    // 4: the mirrored orientations were added to the hashes; 5: the grey
    // squares are averaged over their areas instead of a Lanczos filter.
    static constexpr int kPipelineVersion = 5;
    static constexpr int kTurns = 4;
    static constexpr int kOrientations = 8;

    // DCT hashes of the 32x32 rendition in eight orientations: as it stands,
    // then turned a quarter, a half and three quarters clockwise; then the
    // same four turns, each mirrored left-right after turning. Records made
    // before mirroring was measured hold the first four only.
    std::vector<std::uint64_t> hashes;
    // The same orientations of the 64x64 rendition.
    std::vector<DetailHash> detailHashes;
    std::optional<std::vector<std::uint8_t>> featurePrint;
    int featurePrintRevision = 0;
    double sharpness = 0;
    double meanLuma = 0;
    double clipped = 0;
    std::optional<Date> captureDate;
    // As displayed, so turned by the orientation tag.
    int pixelWidth = 0;
    int pixelHeight = 0;
    int version = kPipelineVersion;
    // All three present or all absent.
    std::optional<int> qualityScore;
    std::optional<bool> isUtility;
    std::optional<int> qualityRevision;
    std::optional<FaceReading> faces;

    [[nodiscard]] std::int64_t pixels() const {
        return static_cast<std::int64_t>(pixelWidth) * pixelHeight;
    }

    friend bool operator==(const ImageFeatures&, const ImageFeatures&) = default;
};

// Stored form: a dictionary whose keys are the field names; absent optional
// fields are left out. The capture date is stored as a real (seconds since
// 2001-01-01 GMT) so that it comes back bit for bit; a stored date value is
// read too. Decoding answers nothing for a record with a missing or
// mistyped field.
[[nodiscard]] PlistValue toPlist(const ImageFeatures& features);
[[nodiscard]] std::optional<ImageFeatures> imageFeaturesFromPlist(const PlistValue& value);

} // namespace brevant
