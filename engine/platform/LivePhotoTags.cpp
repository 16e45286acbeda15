#include "LivePhotoTags.hpp"

#include "engine/platform/ReadOnlyFile.hpp"
#include "engine/platform/VideoProbe.hpp"

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exiv2/exiv2.hpp>
#include <fmt/format.h>
#include <mutex>
#include <vector>

namespace brevant::platform {

namespace {

// Apple's maker note: "Apple iOS", a version, the byte order, then one IFD
// whose offsets count from the note's first byte.
constexpr std::size_t kAppleHeader = 14;
constexpr std::string_view kAppleSignature = "Apple iOS";
// The maker note's tag for the identifier shared with the movie.
constexpr std::string_view kContentIdentifierKey = "Exif.Image.0x0011";

void initialiseExiv2() {
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::enableBMFF(true);
    });
}

// exiv2 0.27 knows no Apple maker note, so its IFD is handed to exiv2's
// TIFF parser under a TIFF header of the note's own byte order, written over
// the signature: the IFD stays where its offsets expect it.
std::optional<std::string> appleContentIdentifier(const Exiv2::ExifData& exif) {
    auto note = exif.findKey(Exiv2::ExifKey("Exif.Photo.MakerNote"));
    if (note == exif.end() || note->size() <= static_cast<long>(kAppleHeader)) {
        return std::nullopt;
    }
    std::vector<Exiv2::byte> bytes(static_cast<std::size_t>(note->size()));
    note->copy(bytes.data(), Exiv2::invalidByteOrder);
    if (std::memcmp(bytes.data(), kAppleSignature.data(), kAppleSignature.size()) != 0) {
        return std::nullopt;
    }
    bool big = bytes[12] == 'M' && bytes[13] == 'M';
    bool little = bytes[12] == 'I' && bytes[13] == 'I';
    if (!big && !little) {
        return std::nullopt;
    }
    std::array<Exiv2::byte, 8> header =
        big ? std::array<Exiv2::byte, 8>{'M', 'M', 0, 42, 0, 0, 0, kAppleHeader}
            : std::array<Exiv2::byte, 8>{'I', 'I', 42, 0, kAppleHeader, 0, 0, 0};
    std::ranges::copy(header, bytes.begin());
    Exiv2::ExifData ifd;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    Exiv2::TiffParser::decode(ifd, iptc, xmp, bytes.data(),
                              static_cast<std::uint32_t>(bytes.size()));
    auto identifier = ifd.findKey(Exiv2::ExifKey(std::string(kContentIdentifierKey)));
    if (identifier == ifd.end() || identifier->toString().empty()) {
        return std::nullopt;
    }
    return identifier->toString();
}

std::optional<std::string> exifText(const Exiv2::ExifData& exif, const char* key) {
    auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found == exif.end()) {
        return std::nullopt;
    }
    std::string text = found->toString();
    if (text.empty()) {
        return std::nullopt;
    }
    return text;
}

// "+02:00", "+0200", "-05" or "Z": seconds east of UTC.
std::optional<long> zoneOffset(std::string_view text) {
    if (text == "Z") {
        return 0;
    }
    if (text.size() < 3 || (text[0] != '+' && text[0] != '-')) {
        return std::nullopt;
    }
    int hours = 0;
    int minutes = 0;
    std::string digits(text.substr(1));
    std::erase(digits, ':');
    if (digits.size() != 2 && digits.size() != 4) {
        return std::nullopt;
    }
    if (std::sscanf(digits.c_str(), "%2d%2d", &hours, &minutes) < 1) {
        return std::nullopt;
    }
    long seconds = hours * 3600L + minutes * 60L;
    return text[0] == '-' ? -seconds : seconds;
}

std::optional<std::int64_t> secondsOf(std::tm fields, const std::optional<long>& offset) {
    fields.tm_year -= 1900;
    fields.tm_mon -= 1;
    fields.tm_isdst = -1;
    std::time_t time = offset ? ::timegm(&fields) - *offset : std::mktime(&fields);
    if (time == static_cast<std::time_t>(-1)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(time);
}

} // namespace

std::optional<std::int64_t> LivePhotoTags::isoSeconds(const std::string& text) {
    std::tm fields{};
    int used = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%n", &fields.tm_year, &fields.tm_mon,
                    &fields.tm_mday, &fields.tm_hour, &fields.tm_min, &fields.tm_sec, &used) != 6) {
        return std::nullopt;
    }
    std::string_view rest = std::string_view(text).substr(static_cast<std::size_t>(used));
    if (rest.starts_with('.')) {
        rest.remove_prefix(std::min(rest.find_first_not_of("0123456789", 1), rest.size()));
    }
    std::optional<long> offset;
    if (!rest.empty()) {
        offset = zoneOffset(rest);
        if (!offset) {
            return std::nullopt;
        }
    }
    return secondsOf(fields, offset);
}

std::optional<std::int64_t> LivePhotoTags::exifSeconds(const std::string& text,
                                                       const std::optional<std::string>& offset) {
    std::tm fields{};
    if (std::sscanf(text.c_str(), "%4d:%2d:%2d %2d:%2d:%2d", &fields.tm_year, &fields.tm_mon,
                    &fields.tm_mday, &fields.tm_hour, &fields.tm_min, &fields.tm_sec) != 6) {
        return std::nullopt;
    }
    std::optional<long> zone = offset ? zoneOffset(*offset) : std::nullopt;
    return secondsOf(fields, zone);
}

LiveTags LivePhotoTags::ofPhoto(const std::string& path) {
    initialiseExiv2();
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return {};
    }
    // The descriptor's own entry, so exiv2 reads the file opened above and
    // nothing a link may point to since, and only the parts holding tags.
    std::string own = fmt::format("/proc/self/fd/{}", file->descriptor());
    try {
        auto image = Exiv2::ImageFactory::open(own, false);
        if (image.get() == nullptr) {
            return {};
        }
        image->readMetadata();
        const Exiv2::ExifData& exif = image->exifData();
        LiveTags tags;
        tags.contentIdentifier = appleContentIdentifier(exif);
        if (auto taken = exifText(exif, "Exif.Photo.DateTimeOriginal")) {
            tags.captured = exifSeconds(*taken, exifText(exif, "Exif.Photo.OffsetTimeOriginal"));
        }
        return tags;
    } catch (const Exiv2::AnyError&) {
        return {};
    } catch (const std::exception&) {
        return {};
    }
}

LiveTags LivePhotoTags::ofMovie(const std::string& path) {
    auto facts = VideoProbe::read(path);
    if (!facts) {
        return {};
    }
    LiveTags tags{.contentIdentifier = facts->contentIdentifier,
                  .durationSeconds = facts->durationSeconds};
    // Apple's own date keeps the zone it was taken in; the container's is UTC.
    if (auto apple = facts->appleCreationDate) {
        tags.captured = isoSeconds(*apple);
    }
    if (auto container = facts->creationTime; !tags.captured && container) {
        tags.captured = isoSeconds(*container);
    }
    return tags;
}

} // namespace brevant::platform
