#include "PhotoProbe.hpp"

#include "engine/platform/ReadOnlyFile.hpp"
#include "engine/platform/VipsRuntime.hpp"

#include <cstdlib>
#include <exception>
#include <vips/vips8>

namespace brevant::platform {

namespace {

using vips::VImage;

// libvips shows EXIF values as "value (value, type, n components, n bytes)".
std::optional<std::string> exifText(const VImage& image, const char* field) {
    if (image.get_typeof(field) == 0) {
        return std::nullopt;
    }
    std::string text = image.get_string(field);
    if (std::size_t annotation = text.find(" ("); annotation != std::string::npos) {
        text.resize(annotation);
    }
    return text;
}

std::optional<int> exifOrientation(const VImage& image) {
    auto text = exifText(image, "exif-ifd0-Orientation");
    if (!text || text->empty()) {
        return std::nullopt;
    }
    int value = std::atoi(text->c_str());
    if (value < 1 || value > 8) {
        return std::nullopt;
    }
    return value;
}

bool turnsQuarter(const VImage& image) {
    if (image.get_typeof(VIPS_META_ORIENTATION) != G_TYPE_INT) {
        return false;
    }
    int orientation = image.get_int(VIPS_META_ORIENTATION);
    return orientation >= 5 && orientation <= 8;
}

template <class Step>
auto withImage(const std::string& path, Step step)
    -> std::expected<decltype(step(std::declval<VImage>())), std::string> {
    if (!VipsRuntime::ensureStarted()) {
        return std::unexpected(std::string("libvips could not start"));
    }
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return std::unexpected(errorText(file.error()));
    }
    try {
        VImage image = VImage::new_from_source(
            vips::VSource::new_from_descriptor(file->descriptor()), "",
            VImage::option()->set("fail", true)->set("access", VIPS_ACCESS_SEQUENTIAL));
        return step(image);
    } catch (const std::exception& e) {
        return std::unexpected(std::string(e.what()));
    }
}

} // namespace

std::expected<PhotoFacts, std::string> PhotoProbe::read(const std::string& path) {
    return withImage(path, [](const VImage& image) {
        bool turned = turnsQuarter(image);
        PhotoFacts facts;
        facts.displayedWidth = turned ? image.height() : image.width();
        facts.displayedHeight = turned ? image.width() : image.height();
        facts.exifOrientation = exifOrientation(image);
        facts.dateTimeOriginal = exifText(image, "exif-ifd2-DateTimeOriginal");
        facts.hasExif = image.get_typeof(VIPS_META_EXIF_NAME) != 0;
        facts.hasXmp = image.get_typeof(VIPS_META_XMP_NAME) != 0;
        facts.hasColourProfile = image.get_typeof(VIPS_META_ICC_NAME) != 0;
        return facts;
    });
}

std::expected<void, std::string> PhotoProbe::decodeFully(const std::string& path) {
    auto decoded = withImage(path, [](const VImage& image) {
        // The mean needs every pixel; `fail` turns the decoder's warnings
        // into errors.
        return image.avg();
    });
    if (!decoded) {
        return std::unexpected(decoded.error());
    }
    return {};
}

} // namespace brevant::platform
