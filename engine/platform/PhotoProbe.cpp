#include "PhotoProbe.hpp"

#include "engine/platform/ReadOnlyFile.hpp"
#include "engine/platform/VipsRuntime.hpp"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <libheif/heif.h>
#include <memory>
#include <string_view>
#include <vector>
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

PhotoFacts facts(const VImage& image) {
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
}

struct HeifContextFreer {
    void operator()(heif_context* context) const { heif_context_free(context); }
};

struct HeifHandleFreer {
    void operator()(heif_image_handle* handle) const { heif_image_handle_release(handle); }
};

// libvips does not show a HEIF file's XMP, so libheif is asked whether the
// primary image carries an XMP block. The file is read through its open
// descriptor, never through a final symbolic link.
bool heifHasXmp(const std::string& path) {
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return false;
    }
    std::string opened = "/proc/self/fd/" + std::to_string(file->descriptor());
    std::unique_ptr<heif_context, HeifContextFreer> context(heif_context_alloc());
    if (heif_context_read_from_file(context.get(), opened.c_str(), nullptr).code != heif_error_Ok) {
        return false;
    }
    heif_image_handle* raw = nullptr;
    if (heif_context_get_primary_image_handle(context.get(), &raw).code != heif_error_Ok) {
        return false;
    }
    std::unique_ptr<heif_image_handle, HeifHandleFreer> handle(raw);
    int count = heif_image_handle_get_number_of_metadata_blocks(handle.get(), "mime");
    std::vector<heif_item_id> ids(static_cast<std::size_t>(std::max(count, 0)));
    heif_image_handle_get_list_of_metadata_block_IDs(handle.get(), "mime", ids.data(), count);
    for (heif_item_id id : ids) {
        const char* type = heif_image_handle_get_metadata_content_type(handle.get(), id);
        if (type != nullptr && std::string_view(type) == "application/rdf+xml") {
            return true;
        }
    }
    return false;
}

bool isHeif(const VImage& image) {
    return image.get_typeof(VIPS_META_LOADER) != 0 &&
           std::string_view(image.get_string(VIPS_META_LOADER)).starts_with("heifload");
}

} // namespace

std::expected<PhotoFacts, std::string> PhotoProbe::read(const std::string& path) {
    auto read =
        withImage(path, [](const VImage& image) { return std::pair{facts(image), isHeif(image)}; });
    if (!read) {
        return std::unexpected(read.error());
    }
    auto [found, heif] = *read;
    if (heif && !found.hasXmp) {
        found.hasXmp = heifHasXmp(path);
    }
    return found;
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
