#include "PhotoFormat.hpp"

#include "engine/platform/ContentTypes.hpp"
#include "engine/scan/PathRules.hpp"

#include <algorithm>
#include <array>
#include <ostream>

namespace brevant {

std::string_view rawValue(PhotoFormat format) {
    switch (format) {
    case PhotoFormat::jpeg:
        return "jpeg";
    case PhotoFormat::png:
        return "png";
    case PhotoFormat::heic:
        return "heic";
    case PhotoFormat::tiff:
        return "tiff";
    case PhotoFormat::webp:
        return "webp";
    case PhotoFormat::avif:
        return "avif";
    case PhotoFormat::gif:
        return "gif";
    case PhotoFormat::jxl:
        return "jxl";
    case PhotoFormat::raw:
        return "raw";
    case PhotoFormat::other:
        return "other";
    }
    return "other";
}

std::string_view displayName(PhotoFormat format) {
    switch (format) {
    case PhotoFormat::jpeg:
        return "JPEG";
    case PhotoFormat::png:
        return "PNG";
    case PhotoFormat::heic:
        return "HEIC";
    case PhotoFormat::tiff:
        return "TIFF";
    case PhotoFormat::webp:
        return "WebP";
    case PhotoFormat::avif:
        return "AVIF";
    case PhotoFormat::gif:
        return "GIF";
    case PhotoFormat::jxl:
        return "JPEG XL";
    case PhotoFormat::raw:
        return "RAW";
    case PhotoFormat::other:
        return "Other";
    }
    return "Other";
}

void PrintTo(PhotoFormat format, std::ostream* os) {
    *os << rawValue(format);
}

std::optional<PhotoFormat> photoFormatFromExtension(std::string_view extension) {
    std::string ext = PathRules::asciiLowercased(extension);
    if (ext == "jpg" || ext == "jpeg" || ext == "jpe") {
        return PhotoFormat::jpeg;
    }
    if (ext == "png") {
        return PhotoFormat::png;
    }
    if (ext == "heic" || ext == "heif") {
        return PhotoFormat::heic;
    }
    if (ext == "tif" || ext == "tiff") {
        return PhotoFormat::tiff;
    }
    if (ext == "webp") {
        return PhotoFormat::webp;
    }
    if (ext == "avif") {
        return PhotoFormat::avif;
    }
    if (ext == "gif") {
        return PhotoFormat::gif;
    }
    if (ext == "jxl") {
        return PhotoFormat::jxl;
    }
    if (isRawExtension(ext)) {
        return PhotoFormat::raw;
    }
    return std::nullopt;
}

PhotoFormat photoFormatFromUti(const std::optional<std::string>& uti) {
    if (!uti) {
        return PhotoFormat::other;
    }
    const std::string& type = *uti;
    if (type == "public.jpeg" || type == "image/jpeg") {
        return PhotoFormat::jpeg;
    }
    if (type == "public.png" || type == "image/png") {
        return PhotoFormat::png;
    }
    if (type == "public.heic" || type == "public.heif" || type == "image/heic" ||
        type == "image/heif") {
        return PhotoFormat::heic;
    }
    if (type == "public.tiff" || type == "image/tiff") {
        return PhotoFormat::tiff;
    }
    if (type == "org.webmproject.webp" || type == "public.webp" || type == "image/webp") {
        return PhotoFormat::webp;
    }
    if (type == "public.avif" || type == "image/avif") {
        return PhotoFormat::avif;
    }
    if (type == "com.compuserve.gif" || type == "image/gif") {
        return PhotoFormat::gif;
    }
    if (type == "public.jpeg-xl" || type == "image/jxl") {
        return PhotoFormat::jxl;
    }
    if (type == "public.camera-raw-image" || platform::isCameraRawType(type)) {
        return PhotoFormat::raw;
    }
    return PhotoFormat::other;
}

} // namespace brevant
