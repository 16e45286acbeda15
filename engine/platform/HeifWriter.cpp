#include "HeifWriter.hpp"

#include "engine/platform/NewFile.hpp"
#include "engine/platform/ReadOnlyFile.hpp"
#include "engine/platform/VipsRuntime.hpp"

#include <algorithm>
#include <cstring>
#include <exception>
#include <libheif/heif.h>
#include <memory>
#include <optional>
#include <vector>
#include <vips/vips8>

namespace brevant::platform {

namespace {

using vips::VImage;

struct ContextFreer {
    void operator()(heif_context* context) const { heif_context_free(context); }
};

struct EncoderFreer {
    void operator()(heif_encoder* encoder) const { heif_encoder_release(encoder); }
};

struct ImageFreer {
    void operator()(heif_image* image) const { heif_image_release(image); }
};

struct HandleFreer {
    void operator()(heif_image_handle* handle) const { heif_image_handle_release(handle); }
};

struct OptionsFreer {
    void operator()(heif_encoding_options* options) const { heif_encoding_options_free(options); }
};

// A metadata block as libvips keeps it.
std::optional<std::vector<std::uint8_t>> blob(const VImage& image, const char* name) {
    if (image.get_typeof(name) == 0) {
        return std::nullopt;
    }
    std::size_t size = 0;
    const void* data = image.get_blob(name, &size);
    if (data == nullptr || size == 0) {
        return std::nullopt;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return std::vector<std::uint8_t>(bytes, bytes + size);
}

// What goes into the copy: the pixels as 8-bit RGB or RGBA, as stored, and
// what is said about them.
struct Picture {
    VImage pixels;
    int orientation = 1;
    std::optional<std::vector<std::uint8_t>> exif;
    std::optional<std::vector<std::uint8_t>> xmp;
    std::optional<std::vector<std::uint8_t>> icc;
};

bool isPlainRgb(const VImage& image) {
    VipsInterpretation interpretation = image.interpretation();
    return image.format() == VIPS_FORMAT_UCHAR && (image.bands() == 3 || image.bands() == 4) &&
           (interpretation == VIPS_INTERPRETATION_sRGB ||
            interpretation == VIPS_INTERPRETATION_RGB);
}

Picture pictureOf(VImage image, const PhotoEncoding& encoding) {
    Picture picture;
    if (image.get_typeof(VIPS_META_ORIENTATION) == G_TYPE_INT) {
        picture.orientation = image.get_int(VIPS_META_ORIENTATION);
    }
    if (picture.orientation < 1 || picture.orientation > 8) {
        picture.orientation = 1;
    }
    picture.exif = blob(image, VIPS_META_EXIF_NAME);
    picture.xmp = blob(image, VIPS_META_XMP_NAME);
    picture.icc = blob(image, VIPS_META_ICC_NAME);
    if (!isPlainRgb(image)) {
        // The profile describes pixels that are not the ones written.
        image = picture.icc ? image.icc_transform("srgb", VImage::option()->set("embedded", true))
                            : image.colourspace(VIPS_INTERPRETATION_sRGB);
        image = image.cast(VIPS_FORMAT_UCHAR);
        picture.icc.reset();
    }
    if (encoding.maxLongSide > 0 &&
        std::max(image.width(), image.height()) > encoding.maxLongSide) {
        image = image.resize(static_cast<double>(encoding.maxLongSide) /
                             std::max(image.width(), image.height()));
    }
    picture.pixels = image.copy_memory();
    return picture;
}

std::unique_ptr<heif_image, ImageFreer> heifImageOf(const Picture& picture) {
    const VImage& pixels = picture.pixels;
    bool alpha = pixels.bands() == 4;
    heif_image* raw = nullptr;
    heif_error error =
        heif_image_create(pixels.width(), pixels.height(), heif_colorspace_RGB,
                          alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, &raw);
    if (error.code != heif_error_Ok) {
        return nullptr;
    }
    std::unique_ptr<heif_image, ImageFreer> image(raw);
    heif_image_add_plane(raw, heif_channel_interleaved, pixels.width(), pixels.height(), 8);
    int stride = 0;
    std::uint8_t* plane = heif_image_get_plane(raw, heif_channel_interleaved, &stride);
    const auto* samples = static_cast<const std::uint8_t*>(pixels.data());
    auto row = static_cast<std::size_t>(pixels.width()) * pixels.bands();
    for (int y = 0; y < pixels.height(); ++y) {
        std::memcpy(plane + static_cast<std::ptrdiff_t>(y) * stride,
                    samples + static_cast<std::size_t>(y) * row, row);
    }
    if (picture.icc) {
        heif_image_set_raw_color_profile(raw, "prof", picture.icc->data(), picture.icc->size());
    }
    return image;
}

heif_error writeToFile(heif_context* /*context*/, const void* data, std::size_t size,
                       void* userdata) {
    auto* file = static_cast<NewFile*>(userdata);
    if (!file->write({static_cast<const std::uint8_t*>(data), size})) {
        return {heif_error_Encoding_error, heif_suberror_Cannot_write_output_data,
                "the copy could not be written"};
    }
    return {heif_error_Ok, heif_suberror_Unspecified, "Success"};
}

std::string said(const heif_error& error) {
    return error.message != nullptr ? error.message : "libheif failed";
}

std::expected<void, std::string> encode(heif_context* context, const Picture& picture,
                                        const PhotoEncoding& encoding) {
    heif_encoder* rawEncoder = nullptr;
    heif_error error =
        heif_context_get_encoder_for_format(context, heif_compression_HEVC, &rawEncoder);
    if (error.code != heif_error_Ok) {
        return std::unexpected(said(error));
    }
    std::unique_ptr<heif_encoder, EncoderFreer> encoder(rawEncoder);
    heif_encoder_set_logging_level(rawEncoder, 0);
    if (encoding.lossless) {
        heif_encoder_set_lossless(rawEncoder, 1);
    } else {
        heif_encoder_set_lossy_quality(rawEncoder, encoding.quality);
    }
    auto image = heifImageOf(picture);
    if (!image) {
        return std::unexpected(std::string("its pixels could not be handed to libheif"));
    }
    std::unique_ptr<heif_encoding_options, OptionsFreer> options(heif_encoding_options_alloc());
    // libheif writes this as the container's rotation and mirroring; it never
    // reads the EXIF tag for it.
    options->image_orientation = static_cast<heif_orientation>(picture.orientation);
    heif_image_handle* rawHandle = nullptr;
    error = heif_context_encode_image(context, image.get(), rawEncoder, options.get(), &rawHandle);
    if (error.code != heif_error_Ok) {
        return std::unexpected(said(error));
    }
    std::unique_ptr<heif_image_handle, HandleFreer> handle(rawHandle);
    if (picture.exif) {
        error = heif_context_add_exif_metadata(context, rawHandle, picture.exif->data(),
                                               static_cast<int>(picture.exif->size()));
        if (error.code != heif_error_Ok) {
            return std::unexpected(said(error));
        }
    }
    if (picture.xmp) {
        error = heif_context_add_XMP_metadata(context, rawHandle, picture.xmp->data(),
                                              static_cast<int>(picture.xmp->size()));
        if (error.code != heif_error_Ok) {
            return std::unexpected(said(error));
        }
    }
    return {};
}

} // namespace

std::expected<HeifWriter::Written, std::string> HeifWriter::write(const std::string& source,
                                                                  const std::string& destination,
                                                                  mode_t permissions,
                                                                  const PhotoEncoding& encoding) {
    if (!VipsRuntime::ensureStarted()) {
        return std::unexpected(std::string("libvips could not start"));
    }
    auto input = ReadOnlyFile::open(source);
    if (!input) {
        return std::unexpected(errorText(input.error()));
    }
    Picture picture;
    try {
        VImage image =
            VImage::new_from_source(vips::VSource::new_from_descriptor(input->descriptor()), "",
                                    VImage::option()->set("fail", true));
        picture = pictureOf(image, encoding);
    } catch (const std::exception& e) {
        return std::unexpected(std::string(e.what()));
    }
    std::unique_ptr<heif_context, ContextFreer> context(heif_context_alloc());
    if (auto encoded = encode(context.get(), picture, encoding); !encoded) {
        return std::unexpected(encoded.error());
    }
    auto file = NewFile::create(destination, permissions);
    if (!file) {
        return std::unexpected(errorText(file.error()));
    }
    heif_writer writer{.writer_api_version = 1, .write = &writeToFile};
    heif_error error = heif_context_write(context.get(), &writer, &*file);
    if (error.code != heif_error_Ok) {
        return std::unexpected(said(error));
    }
    if (auto synced = file->sync(); !synced) {
        return std::unexpected(errorText(synced.error()));
    }
    return Written{picture.pixels.width(), picture.pixels.height()};
}

} // namespace brevant::platform
