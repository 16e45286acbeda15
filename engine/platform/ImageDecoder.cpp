#include "ImageDecoder.hpp"

#include "engine/platform/RawDecoder.hpp"
#include "engine/platform/VipsPixels.hpp"
#include "engine/platform/VipsRuntime.hpp"
#include "engine/support/CameraRawExtensions.hpp"
#include "engine/support/PathNames.hpp"

#include <exception>
#include <string_view>

namespace brevant::platform {

using vips::VImage;

namespace {

bool isRawPath(const std::string& path) {
    std::string name = PathNames::lastComponent(path);
    return isRawExtension(PathNames::asciiLowercased(PathNames::extension(name)));
}

std::optional<std::string> exifText(const VImage& image, const char* field) {
    // EXIF values are reference-counted strings, which get_string reads too.
    if (image.get_typeof(field) == 0) {
        return std::nullopt;
    }
    // libvips shows EXIF values as "value (value, type, n components, n bytes)".
    std::string text = image.get_string(field);
    std::size_t annotation = text.find(" (");
    if (annotation != std::string::npos) {
        text.resize(annotation);
    }
    return text;
}

ImageProperties propertiesOf(const VImage& header) {
    ImageProperties properties;
    properties.pixelWidth = header.width();
    properties.pixelHeight = header.height();
    if (header.get_typeof(VIPS_META_ORIENTATION) == G_TYPE_INT) {
        properties.orientation = header.get_int(VIPS_META_ORIENTATION);
    }
    properties.dateTimeOriginal = exifText(header, "exif-ifd2-DateTimeOriginal");
    return properties;
}

std::optional<DecodedPicture> decodeWithVips(const std::string& path, int maxSide) {
    try {
        // The header is read lazily; pixels are decoded once, by the
        // thumbnail, which shrinks while loading and applies the orientation.
        VImage header = VImage::new_from_file(
            path.c_str(), VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        ImageProperties properties = propertiesOf(header);
        VImage thumbnail = VImage::thumbnail(
            path.c_str(), maxSide,
            VImage::option()->set("height", maxSide)->set("size", VIPS_SIZE_DOWN));
        std::optional<DecodedImage> image = plainDecodedImage(thumbnail);
        if (!image) {
            return std::nullopt;
        }
        return DecodedPicture{*image, properties};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

std::optional<DecodedPicture> ImageDecoder::decode(const std::string& path, int maxSide) {
    if (maxSide < 1 || !VipsRuntime::ensureStarted()) {
        return std::nullopt;
    }
    if (isRawPath(path)) {
        return RawDecoder::decode(path, maxSide);
    }
    return decodeWithVips(path, maxSide);
}

} // namespace brevant::platform
