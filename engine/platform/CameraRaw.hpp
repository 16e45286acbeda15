#pragma once

#include "engine/platform/ImageHeaders.hpp"

#include <optional>
#include <string>

namespace brevant::platform {

// Camera RAW files through LibRaw.
struct CameraRaw {
    // The sensor picture's size from the file's header (before any
    // rotation). Nothing when LibRaw does not know the file as a RAW it can
    // open.
    [[nodiscard]] static std::optional<PixelSize> pixelSize(const std::string& path);

    // Decodes and renders the whole picture. False when any step fails or
    // LibRaw reports damaged data on the way: then what it would show is
    // not the whole picture.
    [[nodiscard]] static bool decodesFully(const std::string& path);
};

} // namespace brevant::platform
