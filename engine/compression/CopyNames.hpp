#pragma once

#include "engine/compression/CompressionPlan.hpp"

#include <string>
#include <string_view>

namespace brevant {

// The names a copy goes by: a temporary one while it is written and
// checked, which no user file has and which tells it apart as Brevant's own,
// and the free name it takes once it passed.
struct CopyNames {
    // Beside the original, hidden, with a random part, ending ".part":
    // ".IMG_0001.JPG.brevant-3f2a9c1b.part".
    [[nodiscard]] static std::string temporaryFor(const std::string& original);

    // The name is one temporaryFor gives.
    [[nodiscard]] static bool isTemporary(std::string_view path);

    // The copy's `n`th name choice beside the original, n from 1: a photo's
    // is its name as HEIC ("IMG_0001.HEIC", then "IMG_0001 (2).HEIC"), a
    // video's keeps its container's extension ("IMG_0001 (HEVC).MOV", then
    // "IMG_0001 (HEVC 2).MOV"; an extension other than MOV, MP4 and M4V
    // becomes MOV). The case of the new extension follows the original's.
    [[nodiscard]] static std::string choice(const std::string& original, MediaKind kind, int n);

    // How many choices are tried before the copy is refused for want of a
    // free name.
    static constexpr int kChoices = 999;
};

} // namespace brevant
