#include "CopyNames.hpp"

#include "engine/support/PathNames.hpp"
#include "engine/support/Uuid.hpp"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace brevant {

namespace {

constexpr std::string_view kTemporaryMark = ".brevant-";
constexpr std::string_view kTemporarySuffix = ".part";
constexpr std::size_t kRandomCharacters = 8;

std::string joined(const std::string& folder, std::string_view name) {
    return folder == "/" ? fmt::format("/{}", name) : fmt::format("{}/{}", folder, name);
}

bool isUpper(std::string_view text) {
    return std::ranges::any_of(
               text, [](char c) { return std::isupper(static_cast<unsigned char>(c)); }) &&
           std::ranges::none_of(text,
                                [](char c) { return std::islower(static_cast<unsigned char>(c)); });
}

// The new extension in the original's case.
std::string inCaseOf(std::string_view original, std::string_view lowercased) {
    return isUpper(original) ? PathNames::asciiUppercased(lowercased) : std::string(lowercased);
}

std::string videoExtension(std::string_view original) {
    std::string lowercased = PathNames::asciiLowercased(original);
    if (lowercased == "mov" || lowercased == "mp4" || lowercased == "m4v") {
        return std::string(original);
    }
    return inCaseOf(original, "mov");
}

} // namespace

std::string CopyNames::temporaryFor(const std::string& original) {
    std::string random =
        PathNames::asciiLowercased(Uuid::make().text().substr(0, kRandomCharacters));
    std::string name = fmt::format(".{}{}{}{}", PathNames::lastComponent(original), kTemporaryMark,
                                   random, kTemporarySuffix);
    return joined(PathNames::parentFolder(original), name);
}

bool CopyNames::isTemporary(std::string_view path) {
    std::string name = PathNames::lastComponent(path);
    std::string_view rest = name;
    if (!rest.starts_with('.') || !rest.ends_with(kTemporarySuffix)) {
        return false;
    }
    rest.remove_suffix(kTemporarySuffix.size());
    if (rest.size() < kRandomCharacters + kTemporaryMark.size() + 1) {
        return false;
    }
    std::string_view random = rest.substr(rest.size() - kRandomCharacters);
    rest.remove_suffix(kRandomCharacters);
    return rest.ends_with(kTemporaryMark) && std::ranges::all_of(random, [](char c) {
               return std::isxdigit(static_cast<unsigned char>(c));
           });
}

std::string CopyNames::choice(const std::string& original, MediaKind kind, int n) {
    std::string name = PathNames::lastComponent(original);
    std::string_view stem = PathNames::deletingExtension(name);
    std::string_view extension = PathNames::extension(name);
    std::string copy;
    switch (kind) {
    case MediaKind::photo: {
        std::string heic = inCaseOf(extension, "heic");
        copy = n == 1 ? fmt::format("{}.{}", stem, heic) : fmt::format("{} ({}).{}", stem, n, heic);
        break;
    }
    case MediaKind::video: {
        std::string video = videoExtension(extension);
        copy = n == 1 ? fmt::format("{} (HEVC).{}", stem, video)
                      : fmt::format("{} (HEVC {}).{}", stem, n, video);
        break;
    }
    case MediaKind::motionPhoto:
        copy = n == 1 ? fmt::format("{} (still).{}", stem, extension)
                      : fmt::format("{} (still {}).{}", stem, n, extension);
        break;
    }
    return joined(PathNames::parentFolder(original), copy);
}

} // namespace brevant
