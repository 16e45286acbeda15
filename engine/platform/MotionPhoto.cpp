#include "MotionPhoto.hpp"

#include "engine/platform/NewFile.hpp"
#include "engine/platform/ReadOnlyFile.hpp"
#include "engine/platform/VipsRuntime.hpp"

#include <algorithm>
#include <array>
#include <exiv2/exiv2.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>
#include <vips/vips8>

namespace brevant::platform {

namespace {

using Bytes = std::vector<Exiv2::byte>;

constexpr std::size_t kLargestFile = 1024UL * 1024 * 1024;
constexpr std::string_view kCameraNs = "http://ns.google.com/photos/1.0/camera/";
constexpr std::string_view kContainerNs = "http://ns.google.com/photos/1.0/container/";
constexpr std::string_view kItemNs = "http://ns.google.com/photos/1.0/container/item/";

// Google's namespaces under fixed prefixes, so that keys read the same
// whatever prefix a camera wrote.
void initialiseExiv2() {
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::XmpParser::initialize();
        Exiv2::XmpProperties::registerNs(std::string(kCameraNs), "GCamera");
        Exiv2::XmpProperties::registerNs(std::string(kContainerNs), "Container");
        Exiv2::XmpProperties::registerNs(std::string(kItemNs), "Item");
    });
}

std::optional<Bytes> wholeFile(const std::string& path) {
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return std::nullopt;
    }
    auto status = file->status();
    if (!status || status->size <= 0 || static_cast<std::size_t>(status->size) > kLargestFile) {
        return std::nullopt;
    }
    Bytes bytes(static_cast<std::size_t>(status->size));
    auto filled = file->fill(std::as_writable_bytes(std::span(bytes)));
    if (!filled || *filled != bytes.size()) {
        return std::nullopt;
    }
    return bytes;
}

// The metadata of JPEG bytes; nothing when exiv2 cannot read them.
std::optional<Exiv2::Image::AutoPtr> opened(const Bytes& bytes) {
    initialiseExiv2();
    try {
        auto image = Exiv2::ImageFactory::open(bytes.data(), static_cast<long>(bytes.size()));
        if (image.get() == nullptr || image->mimeType() != "image/jpeg") {
            return std::nullopt;
        }
        image->readMetadata();
        return image;
    } catch (const Exiv2::AnyError&) {
        return std::nullopt;
    }
}

bool isMotionKey(const std::string& key) {
    return key.starts_with("Xmp.GCamera.MotionPhoto") ||
           key.starts_with("Xmp.GCamera.MicroVideo") || key.starts_with("Xmp.Container.");
}

// Where the EXIF blocks lie inside the file, which a rewrite may move: not
// tags of the photo.
bool isPlacement(const std::string& key) {
    static constexpr std::array<std::string_view, 5> kPlacements{
        "Exif.Image.ExifTag", "Exif.Image.GPSTag", "Exif.Photo.InteroperabilityTag",
        "Exif.Thumbnail.JPEGInterchangeFormat", "Exif.Image.JPEGInterchangeFormat"};
    return std::ranges::find(kPlacements, key) != kPlacements.end();
}

std::optional<std::int64_t> xmpNumber(const Exiv2::XmpData& xmp, const std::string& key) {
    auto found = xmp.findKey(Exiv2::XmpKey(key));
    if (found == xmp.end()) {
        return std::nullopt;
    }
    try {
        return std::stoll(found->toString());
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

bool isOne(const Exiv2::XmpData& xmp, const char* key) {
    return xmpNumber(xmp, key) == 1;
}

// The movie's length as the XMP gives it: MicroVideo's offset from the end,
// or the Length of the container's MotionPhoto item. A container that also
// holds other items (a gain map) is left alone: cutting one out would break
// the references of the rest.
std::optional<std::int64_t> movieLength(const Exiv2::XmpData& xmp) {
    if (isOne(xmp, "Xmp.GCamera.MicroVideo")) {
        return xmpNumber(xmp, "Xmp.GCamera.MicroVideoOffset");
    }
    if (!isOne(xmp, "Xmp.GCamera.MotionPhoto")) {
        return std::nullopt;
    }
    std::optional<std::int64_t> length;
    for (int item = 1;; ++item) {
        std::string prefix = fmt::format("Xmp.Container.Directory[{}]/Container:Item/Item:", item);
        auto semantic = xmp.findKey(Exiv2::XmpKey(prefix + "Semantic"));
        if (semantic == xmp.end()) {
            break;
        }
        std::string what = semantic->toString();
        if (what == "MotionPhoto") {
            length = xmpNumber(xmp, prefix + "Length");
        } else if (what != "Primary") {
            return std::nullopt;
        }
    }
    return length;
}

// An MP4 or QuickTime movie starts with its "ftyp" box.
bool startsAMovie(const Bytes& bytes, std::size_t at) {
    constexpr std::string_view kType = "ftyp";
    return at + 8 <= bytes.size() &&
           std::equal(kType.begin(), kType.end(),
                      bytes.begin() + static_cast<std::ptrdiff_t>(at + 4));
}

std::optional<MotionPhotoFacts> factsOf(const Bytes& bytes, const Exiv2::XmpData& xmp) {
    auto length = movieLength(xmp);
    auto size = static_cast<std::int64_t>(bytes.size());
    if (!length || *length <= 0 || *length >= size) {
        return std::nullopt;
    }
    std::int64_t still = size - *length;
    if (!startsAMovie(bytes, static_cast<std::size_t>(still))) {
        return std::nullopt;
    }
    return MotionPhotoFacts{.stillBytes = still, .movieBytes = *length};
}

std::optional<vips::VImage> decoded(const Bytes& bytes) {
    if (!VipsRuntime::ensureStarted()) {
        return std::nullopt;
    }
    try {
        vips::VImage image = vips::VImage::new_from_buffer(
            bytes.data(), bytes.size(), "", vips::VImage::option()->set("fail", true));
        // Copied into memory so that the bytes may go before the pixels.
        return image.copy_memory();
    } catch (const vips::VError&) {
        return std::nullopt;
    }
}

} // namespace

std::optional<MotionPhotoFacts> MotionPhoto::read(const std::string& path) {
    auto bytes = wholeFile(path);
    if (!bytes) {
        return std::nullopt;
    }
    auto image = opened(*bytes);
    if (!image) {
        return std::nullopt;
    }
    return factsOf(*bytes, (*image)->xmpData());
}

std::expected<void, std::string>
MotionPhoto::writeStill(const std::string& original, const std::string& still, mode_t permissions) {
    auto bytes = wholeFile(original);
    if (!bytes) {
        return std::unexpected(std::string("the photo could not be read"));
    }
    auto image = opened(*bytes);
    auto facts = image ? factsOf(*bytes, (*image)->xmpData()) : std::nullopt;
    if (!facts) {
        return std::unexpected(std::string("it is no longer a motion photo"));
    }
    bytes->resize(static_cast<std::size_t>(facts->stillBytes));
    Bytes written;
    try {
        auto photo = Exiv2::ImageFactory::open(bytes->data(), static_cast<long>(bytes->size()));
        photo->readMetadata();
        Exiv2::XmpData& xmp = photo->xmpData();
        for (auto datum = xmp.begin(); datum != xmp.end();) {
            datum = isMotionKey(datum->key()) ? xmp.erase(datum) : std::next(datum);
        }
        photo->writeMetadata();
        Exiv2::BasicIo& io = photo->io();
        io.open();
        Exiv2::DataBuf all = io.read(static_cast<long>(io.size()));
        io.close();
        written.assign(all.pData_, all.pData_ + all.size_);
    } catch (const Exiv2::AnyError& error) {
        return std::unexpected(std::string(error.what()));
    }
    auto file = NewFile::create(still, permissions);
    if (!file) {
        return std::unexpected(fmt::format("it could not be created ({})", file.error()));
    }
    if (auto done = file->write(written); !done) {
        return std::unexpected(fmt::format("it could not be written ({})", done.error()));
    }
    if (auto synced = file->sync(); !synced) {
        return std::unexpected(fmt::format("it could not be written ({})", synced.error()));
    }
    return {};
}

bool MotionPhoto::declaresMotion(const std::string& path) {
    auto bytes = wholeFile(path);
    if (!bytes) {
        return false;
    }
    auto image = opened(*bytes);
    if (!image) {
        return false;
    }
    const Exiv2::XmpData& xmp = (*image)->xmpData();
    return std::ranges::any_of(
        xmp, [](const Exiv2::Xmpdatum& datum) { return isMotionKey(datum.key()); });
}

std::optional<bool> MotionPhoto::samePixels(const std::string& a, const std::string& b) {
    auto first = wholeFile(a);
    auto second = wholeFile(b);
    if (!first || !second) {
        return std::nullopt;
    }
    auto one = decoded(*first);
    auto two = decoded(*second);
    if (!one || !two) {
        return std::nullopt;
    }
    if (one->width() != two->width() || one->height() != two->height() ||
        one->bands() != two->bands() || one->format() != two->format()) {
        return false;
    }
    std::size_t sizeA = 0;
    std::size_t sizeB = 0;
    const auto* pixelsA = static_cast<const std::uint8_t*>(one->data());
    const auto* pixelsB = static_cast<const std::uint8_t*>(two->data());
    sizeA = VIPS_IMAGE_SIZEOF_IMAGE(one->get_image());
    sizeB = VIPS_IMAGE_SIZEOF_IMAGE(two->get_image());
    return sizeA == sizeB && std::equal(pixelsA, pixelsA + sizeA, pixelsB);
}

std::optional<std::string> MotionPhoto::tagsLost(const std::string& original,
                                                 const std::string& still) {
    auto first = wholeFile(original);
    auto second = wholeFile(still);
    if (!first || !second) {
        return std::nullopt;
    }
    auto before = opened(*first);
    auto after = opened(*second);
    if (!before || !after) {
        return std::nullopt;
    }
    std::vector<std::string> lost;
    const Exiv2::ExifData& exif = (*after)->exifData();
    for (const auto& datum : (*before)->exifData()) {
        if (isPlacement(datum.key())) {
            continue;
        }
        auto kept = exif.findKey(Exiv2::ExifKey(datum.key()));
        if (kept == exif.end() || kept->toString() != datum.toString()) {
            lost.push_back(datum.key());
        }
    }
    const Exiv2::XmpData& xmp = (*after)->xmpData();
    for (const auto& datum : (*before)->xmpData()) {
        if (isMotionKey(datum.key())) {
            continue;
        }
        auto kept = xmp.findKey(Exiv2::XmpKey(datum.key()));
        if (kept == xmp.end() || kept->toString() != datum.toString()) {
            lost.push_back(datum.key());
        }
    }
    return fmt::format("{}", fmt::join(lost, ", "));
}

} // namespace brevant::platform
