#include "RawDecoder.hpp"

#include "engine/platform/VipsPixels.hpp"

#include <algorithm>
#include <array>
#include <ctime>
#include <exception>
#include <libraw/libraw.h>
#include <memory>

namespace brevant::platform {

using vips::VImage;

namespace {

// LibRaw reports damaged data on standard error unless told otherwise; a
// damaged file simply gives no picture here.
void ignoreDataError(void* /*data*/, const char* /*file*/, const int /*offset*/) {}

void ignoreMemoryError(void* /*data*/, const char* /*file*/, const char* /*where*/) {}

struct ProcessedImageFree {
    void operator()(libraw_processed_image_t* image) const { LibRaw::dcraw_clear_mem(image); }
};

using ProcessedImage = std::unique_ptr<libraw_processed_image_t, ProcessedImageFree>;

// The capture date as the EXIF text says it, like every other format's.
// LibRaw's own timestamp went through mktime, which moves a time inside a
// daylight-saving gap by an hour, so the text is caught while LibRaw parses.
struct ExifDates {
    std::optional<std::string> original;
    std::optional<std::string> digitized;
    std::optional<std::string> modified;

    [[nodiscard]] std::optional<std::string> best() const {
        return original ? original : digitized ? digitized : modified;
    }
};

constexpr int kExifTextDateLength = 19;

std::optional<std::string> exifDateText(void* stream, int length) {
    if (length < kExifTextDateLength || length > 64) {
        return std::nullopt;
    }
    std::array<char, 64> text{};
    auto* source = static_cast<LibRaw_abstract_datastream*>(stream);
    if (source->read(text.data(), 1, static_cast<std::size_t>(length)) != length) {
        return std::nullopt;
    }
    std::string date(text.data(), kExifTextDateLength);
    // "    :  :     :  :  " and similar blanks mean no date.
    if (date.find_first_of("123456789") == std::string::npos) {
        return std::nullopt;
    }
    return date;
}

void noteExifTag(void* context, int tag, int /*type*/, int length, unsigned int /*order*/,
                 void* stream, INT64 /*base*/) {
    constexpr int kDateTimeOriginal = 0x9003;
    constexpr int kDateTimeDigitized = 0x9004;
    constexpr int kDateTime = 0x0132;
    auto& dates = *static_cast<ExifDates*>(context);
    // Some LibRaw versions mark a main IFD's tags with its number from bit
    // 20 up; bits 16 to 19 mark a maker's own block, whose dates are not EXIF's.
    if (tag == kDateTimeOriginal && !dates.original) {
        dates.original = exifDateText(stream, length);
    } else if (tag == kDateTimeDigitized && !dates.digitized) {
        dates.digitized = exifDateText(stream, length);
    } else if ((tag & 0xFFFF) == kDateTime && (tag & 0xF0000) == 0 && !dates.modified) {
        dates.modified = exifDateText(stream, length);
    }
}

// LibRaw found a date somewhere the EXIF tags above do not cover (a maker's
// own block): the fields are taken back out in local time, as mktime made it.
std::optional<std::string> timestampText(std::time_t timestamp) {
    if (timestamp <= 0) {
        return std::nullopt;
    }
    std::tm fields{};
    if (::localtime_r(&timestamp, &fields) == nullptr) {
        return std::nullopt;
    }
    std::array<char, 32> text{};
    std::size_t length = std::strftime(text.data(), text.size(), "%Y:%m:%d %H:%M:%S", &fields);
    if (length == 0) {
        return std::nullopt;
    }
    return std::string(text.data(), length);
}

VImage upright(VImage image, int orientation) {
    if (orientation == 1) {
        return image;
    }
    image = image.copy();
    image.set(VIPS_META_ORIENTATION, orientation);
    return image.autorot();
}

// The embedded JPEG preview, shrunk while loading and turned upright, with
// its own long side before shrinking.
struct Preview {
    VImage image;
    int longSide = 0;
};

std::optional<Preview> embeddedPreview(LibRaw& raw, int maxSide, int orientation) {
    if (raw.unpack_thumb() != LIBRAW_SUCCESS) {
        return std::nullopt;
    }
    const libraw_thumbnail_t& thumbnail = raw.imgdata.thumbnail;
    if (thumbnail.tformat != LIBRAW_THUMBNAIL_JPEG || thumbnail.thumb == nullptr ||
        thumbnail.tlength == 0) {
        return std::nullopt;
    }
    // The preview's own EXIF orientation, if any, is not the RAW's: ours is
    // applied instead.
    VImage header = VImage::new_from_buffer(thumbnail.thumb, thumbnail.tlength, "");
    VipsImage* shrunk = nullptr;
    if (vips_thumbnail_buffer(thumbnail.thumb, thumbnail.tlength, &shrunk, maxSide, "height",
                              maxSide, "size", VIPS_SIZE_DOWN, "no_rotate", TRUE, nullptr) != 0) {
        return std::nullopt;
    }
    // Copied out now: the pixels behind it belong to LibRaw.
    VImage image = upright(VImage(shrunk), orientation).copy_memory();
    return Preview{image, std::max(header.width(), header.height())};
}

std::optional<VImage> halfSizeDecode(LibRaw& raw, int maxSide) {
    raw.imgdata.params.half_size = 1;
    raw.imgdata.params.output_bps = 8;
    if (raw.unpack() != LIBRAW_SUCCESS || raw.dcraw_process() != LIBRAW_SUCCESS) {
        return std::nullopt;
    }
    int error = 0;
    ProcessedImage processed(raw.dcraw_make_mem_image(&error));
    if (!processed || error != LIBRAW_SUCCESS || processed->type != LIBRAW_IMAGE_BITMAP ||
        processed->bits != 8 || (processed->colors != 1 && processed->colors != 3)) {
        return std::nullopt;
    }
    // LibRaw has already turned these pixels upright.
    VImage image = VImage::new_from_memory(processed->data, processed->data_size, processed->width,
                                           processed->height, processed->colors, VIPS_FORMAT_UCHAR);
    image = image.copy(VImage::option()->set("interpretation", processed->colors == 1
                                                                   ? VIPS_INTERPRETATION_B_W
                                                                   : VIPS_INTERPRETATION_sRGB));
    // Copied out before the LibRaw buffer goes away.
    return image
        .thumbnail_image(maxSide,
                         VImage::option()->set("height", maxSide)->set("size", VIPS_SIZE_DOWN))
        .copy_memory();
}

std::optional<DecodedPicture> decodeRaw(const std::string& path, int maxSide) {
    auto raw = std::make_unique<LibRaw>();
    raw->set_dataerror_handler(ignoreDataError, nullptr);
    raw->set_memerror_handler(ignoreMemoryError, nullptr);
    ExifDates dates;
    raw->set_exifparser_handler(noteExifTag, &dates);
    if (raw->open_file(path.c_str()) != LIBRAW_SUCCESS) {
        return std::nullopt;
    }
    ImageProperties properties;
    const libraw_image_sizes_t& sizes = raw->imgdata.sizes;
    if (sizes.width > 0 && sizes.height > 0) {
        properties.pixelWidth = sizes.width;
        properties.pixelHeight = sizes.height;
    }
    int orientation = RawDecoder::orientationOfFlip(sizes.flip);
    properties.orientation = orientation;
    properties.dateTimeOriginal = dates.best();
    if (!properties.dateTimeOriginal) {
        properties.dateTimeOriginal = timestampText(raw->imgdata.other.timestamp);
    }

    std::optional<Preview> preview;
    try {
        preview = embeddedPreview(*raw, maxSide, orientation);
    } catch (const std::exception&) {
        preview.reset();
    }
    std::optional<VImage> pixels;
    if (preview && preview->longSide >= ImageDecoder::kMinPreviewSide) {
        pixels = preview->image;
    } else {
        pixels = halfSizeDecode(*raw, maxSide);
        // A small preview still beats no picture when the RAW data itself
        // cannot be decoded.
        if (!pixels && preview) {
            pixels = preview->image;
        }
    }
    if (!pixels) {
        return std::nullopt;
    }
    std::optional<DecodedImage> image = plainDecodedImage(*pixels);
    if (!image) {
        return std::nullopt;
    }
    return DecodedPicture{*image, properties};
}

} // namespace

int RawDecoder::orientationOfFlip(int flip) {
    constexpr std::array<int, 8> kOrientation = {1, 2, 4, 3, 5, 8, 6, 7};
    return (flip >= 0 && flip < 8) ? kOrientation[static_cast<std::size_t>(flip)] : 1;
}

std::optional<DecodedPicture> RawDecoder::decode(const std::string& path, int maxSide) {
    try {
        return decodeRaw(path, maxSide);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace brevant::platform
