#pragma once

#include "engine/support/PlistValue.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace brevant::platform {

// Binary property lists (format "bplist00"): written here, read through
// libplist.
struct BinaryPlist {
    // Nothing for text that is not valid UTF-8.
    [[nodiscard]] static std::optional<std::vector<std::uint8_t>> encode(const PlistValue& value);

    // Nothing for bytes that are not a well-formed binary property list.
    [[nodiscard]] static std::optional<PlistValue> decode(std::span<const std::uint8_t> bytes);
};

} // namespace brevant::platform
