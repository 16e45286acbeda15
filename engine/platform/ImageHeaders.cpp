#include "ImageHeaders.hpp"

#include "engine/platform/ReadOnlyFile.hpp"
#include "engine/platform/VipsRuntime.hpp"

#include <libheif/heif.h>
#include <string_view>
#include <vips/vips8>

namespace brevant::platform {

namespace {

// Loaders of text tables, which can recognise a text file by its first line
// but never hold a photo.
bool isTableLoader(std::string_view loader) {
    return loader.starts_with("matrixload") || loader.starts_with("csvload");
}

// The libvips loader that reads the format from a source.
const char* loaderFor(ImageLoader loader) {
    switch (loader) {
    case ImageLoader::jpeg:
        return "jpegload_source";
    case ImageLoader::png:
        return "pngload_source";
    case ImageLoader::heic:
        return "heifload_source";
    case ImageLoader::tiff:
        return "tiffload_source";
    case ImageLoader::webp:
        return "webpload_source";
    case ImageLoader::avif:
        // AVIF is HEIF holding AV1 pictures: the same loader reads both.
        return "heifload_source";
    case ImageLoader::gif:
        return "gifload_source";
    case ImageLoader::jxl:
        return "jxlload_source";
    }
    return nullptr;
}

// The loader for the source's contents. The one its name suggests is asked
// first, which spares sniffing with every loader libvips has for nearly
// every picture; a file whose contents are another format gets that
// format's loader.
const char* loaderOf(vips::VSource& source, ImageLoader named) {
    const char* expected = loaderFor(named);
    if (expected != nullptr && vips_foreign_is_a_source(expected, source.get_source()) != 0) {
        return expected;
    }
    const char* found = vips_foreign_find_load_source(source.get_source());
    if (found == nullptr) {
        return nullptr;
    }
    return vips_nickname_find(g_type_from_name(found));
}

} // namespace

bool ImageHeaders::canDecode(ImageLoader loader) {
    if (!VipsRuntime::ensureStarted() || vips_type_find("VipsOperation", loaderFor(loader)) == 0) {
        return false;
    }
    // libheif may be built without an AV1 decoder; the loader would then
    // fail on every AVIF picture.
    return loader != ImageLoader::avif || heif_have_decoder_for_format(heif_compression_AV1) != 0;
}

std::optional<PixelSize> ImageHeaders::pixelSize(const std::string& path, ImageLoader named) {
    if (!VipsRuntime::ensureStarted()) {
        return std::nullopt;
    }
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return std::nullopt;
    }
    try {
        // libvips reads through a copy of our descriptor, so the file it
        // reads is the one opened without following a link.
        vips::VSource source = vips::VSource::new_from_descriptor(file->descriptor());
        const char* loader = loaderOf(source, named);
        if (loader == nullptr || isTableLoader(loader)) {
            vips_error_clear();
            return std::nullopt;
        }
        // Opening an image reads its header; pixels would be decoded only
        // when asked for, which never happens here.
        vips::VImage image;
        vips::VImage::call(loader, vips::VImage::option()
                                       ->set("source", source)
                                       ->set("out", &image)
                                       ->set("access", VIPS_ACCESS_SEQUENTIAL));
        return PixelSize{image.width(), image.height()};
    } catch (const vips::VError&) {
        vips_error_clear();
        return std::nullopt;
    }
}

} // namespace brevant::platform
