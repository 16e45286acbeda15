#pragma once

#include <string_view>

namespace brevant::platform {

// The system's type for a name with this extension is an image type
// (shared-mime-info, as file managers see it).
[[nodiscard]] bool isImageExtension(std::string_view lowercasedExtension);

// The system's type for a name with this extension is a video type.
[[nodiscard]] bool isVideoExtension(std::string_view lowercasedExtension);

// The type (a MIME type) conforms to camera RAW, image/x-dcraw.
[[nodiscard]] bool isCameraRawType(std::string_view type);

} // namespace brevant::platform
