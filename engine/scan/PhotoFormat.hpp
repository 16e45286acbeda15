#pragma once

#include "engine/support/CameraRawExtensions.hpp"
#include "engine/support/RawValue.hpp"

#include <array>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

enum class PhotoFormat {
    jpeg,
    png,
    heic,
    tiff,
    webp,
    avif,
    gif,
    jxl,
    raw,
    other,
};

template <> struct EnumCases<PhotoFormat> {
    static constexpr std::array kAll{PhotoFormat::jpeg, PhotoFormat::png,  PhotoFormat::heic,
                                     PhotoFormat::tiff, PhotoFormat::webp, PhotoFormat::avif,
                                     PhotoFormat::gif,  PhotoFormat::jxl,  PhotoFormat::raw,
                                     PhotoFormat::other};
};

[[nodiscard]] std::string_view rawValue(PhotoFormat format);
// The display name: "JPEG", "PNG", "HEIC", "TIFF", "WebP", "AVIF", "GIF",
// "JPEG XL", "RAW", "Other".
[[nodiscard]] std::string_view displayName(PhotoFormat format);
void PrintTo(PhotoFormat format, std::ostream* os);

// The format a file name extension stands for, without regard to case; no
// format means the file is not a picture. Never gives `other`.
[[nodiscard]] std::optional<PhotoFormat> photoFormatFromExtension(std::string_view extension);

// The format of a type identifier: the platform identifiers ("public.jpeg")
// and their MIME types ("image/jpeg") are both understood; a type that
// conforms to camera RAW (image/x-dcraw) gives `raw`; anything else `other`.
[[nodiscard]] PhotoFormat photoFormatFromUti(const std::optional<std::string>& uti);

} // namespace brevant
