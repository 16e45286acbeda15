#pragma once

#include "engine/support/PlistValue.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace brevant::platform {

// Binary property lists (format "bplist00") through libplist.
struct BinaryPlist {
    [[nodiscard]] static std::optional<std::vector<std::uint8_t>> encode(const PlistValue& value);

    // Nothing for bytes that are not a well-formed binary property list.
    [[nodiscard]] static std::optional<PlistValue> decode(std::span<const std::uint8_t> bytes);
};

} // namespace brevant::platform
