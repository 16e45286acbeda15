#pragma once

#include "engine/platform/DecodedImage.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace brevant::platform {

// An image feature print: an opaque description of a picture's content
// whose distance to another print says how alike they look. Linux has no
// feature-print model yet, so every request answers nothing and matching
// falls back to the hashes; the interface stays so a model can be added
// without touching the measuring logic.
struct FeaturePrint {
    // The revision a print made here would carry; a stored print of another
    // revision is not comparable and is measured again.
    static constexpr int kCurrentRevision = 1;

    struct Observation {
        std::vector<std::uint8_t> archived;
    };

    struct Made {
        std::vector<std::uint8_t> archived;
        int revision = 0;
    };

    [[nodiscard]] static std::optional<Made> make(const DecodedImage& image);

    // A stored print made usable again; nothing for bytes it cannot read.
    [[nodiscard]] static std::optional<Observation>
    observation(std::span<const std::uint8_t> bytes);

    [[nodiscard]] static std::optional<float> distance(const Observation& a, const Observation& b);
};

} // namespace brevant::platform
