#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace brevant {

// Lowercase extensions of camera RAW files: what the scan counts as RAW and
// what the decoder hands to LibRaw.
inline constexpr std::array<std::string_view, 25> kRawExtensions = {
    "dng", "cr2", "cr3", "crw", "nef", "nrw", "arw", "srf", "sr2", "raf", "orf", "rw2", "pef",
    "srw", "raw", "rwl", "3fr", "fff", "iiq", "mos", "mrw", "x3f", "erf", "kdc", "dcr"};

[[nodiscard]] inline bool isRawExtension(std::string_view lowercasedExtension) {
    return std::ranges::find(kRawExtensions, lowercasedExtension) != kRawExtensions.end();
}

} // namespace brevant
