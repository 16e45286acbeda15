#include "ImageHeaders.hpp"

#include "engine/platform/ReadOnlyFile.hpp"
#include "engine/platform/VipsRuntime.hpp"

#include <array>
#include <glib.h>
#include <string_view>
#include <vips/vips8>

namespace brevant::platform {

namespace {

// libtiff and the loaders report every odd tag of a camera's file as a
// warning on standard error; a scan over thousands of photos must not.
void silenceWarnings() {
    static const bool silenced = [] {
        g_log_set_handler(
            "VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE),
            [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
        return true;
    }();
    (void)silenced;
}

bool started() {
    if (!VipsRuntime::ensureStarted()) {
        return false;
    }
    silenceWarnings();
    return true;
}

// Loaders of text tables, which can recognise a text file by its first line
// but never hold a photo.
bool isTableLoader(std::string_view loader) {
    static constexpr std::array<std::string_view, 2> kTables = {"VipsForeignLoadMatrix",
                                                                "VipsForeignLoadCsv"};
    for (auto table : kTables) {
        if (loader.starts_with(table)) {
            return true;
        }
    }
    return false;
}

} // namespace

bool ImageHeaders::canDecode(PhotoFormat format) {
    const char* loader = nullptr;
    switch (format) {
    case PhotoFormat::jpeg:
        loader = "jpegload_source";
        break;
    case PhotoFormat::png:
        loader = "pngload_source";
        break;
    case PhotoFormat::heic:
        loader = "heifload_source";
        break;
    case PhotoFormat::tiff:
        loader = "tiffload_source";
        break;
    case PhotoFormat::raw:
    case PhotoFormat::other:
        return false;
    }
    return started() && vips_type_find("VipsOperation", loader) != 0;
}

std::optional<PixelSize> ImageHeaders::pixelSize(const std::string& path) {
    if (!started()) {
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
        const char* loader = vips_foreign_find_load_source(source.get_source());
        if (loader == nullptr || isTableLoader(loader)) {
            vips_error_clear();
            return std::nullopt;
        }
        vips::VImage image = vips::VImage::new_from_source(
            source, "", vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        return PixelSize{image.width(), image.height()};
    } catch (const vips::VError&) {
        vips_error_clear();
        return std::nullopt;
    }
}

} // namespace brevant::platform
