#pragma once

#include "engine/platform/DecodedImage.hpp"

#include <optional>
#include <string>

namespace brevant {

// A 0-100 quality score from a no-reference image-quality model: OpenCV's
// BRISQUE, whose 0 (pristine) to 100 (badly damaged) is turned around onto
// the -1...1 scale, so a higher score is a better picture.
struct QualityScore {
    // Points by which one score must beat another to count as better.
    static constexpr int kMargin = 10;
    // The revision of our scoring (model and the size it is run at); stored
    // scores of another revision are measured again.
    static constexpr int kRevision = 1;

    // Shown beside the score.
    [[nodiscard]] static const std::string& explanation();

    // All three present or all absent.
    struct Result {
        std::optional<int> score;
        std::optional<bool> isUtility;
        std::optional<int> revision;

        friend bool operator==(const Result&, const Result&) = default;
    };

    // Scores the picture; all fields absent when the model cannot run.
    // BRISQUE gives no verdict on utility images (screenshots, receipts), so
    // `isUtility` is always false here.
    [[nodiscard]] static Result score(const platform::DecodedImage& image);

    // BRISQUE's 0 (best) to 100 (worst) on the -1...1 scale, clamped.
    [[nodiscard]] static double rawFromBrisque(double brisque);

    // The model's -1...1 as 0...100: 0 at or below -1 (and for a value that
    // is not a number), round((min(raw, 1) + 1) x 50) above.
    [[nodiscard]] static int points(double raw);
};

} // namespace brevant
