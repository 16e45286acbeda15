#pragma once

#include "engine/platform/DecodedImage.hpp"

#include <optional>

namespace brevant {

// A 0-100 quality score from a photo-quality model. The model for Linux
// comes later; until then `score` answers with every field absent, which
// the stored records and the hints allow.
struct QualityScore {
    // Points by which one score must beat another to count as better.
    static constexpr int kMargin = 10;
    // The revision of the scoring model; stored scores of another revision
    // are measured again.
    static constexpr int kRevision = 1;

    // All three present or all absent.
    struct Result {
        std::optional<int> score;
        std::optional<bool> isUtility;
        std::optional<int> revision;

        friend bool operator==(const Result&, const Result&) = default;
    };

    [[nodiscard]] static Result score(const platform::DecodedImage& image);

    // The model's -1...1 as 0...100: 0 at or below -1 (and for a value that
    // is not a number), round((min(raw, 1) + 1) x 50) above.
    [[nodiscard]] static int points(double raw);
};

} // namespace brevant
