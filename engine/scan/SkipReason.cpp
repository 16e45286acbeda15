#include "SkipReason.hpp"

#include "engine/support/Json.hpp"
#include "engine/support/Texts.hpp"

#include <fmt/format.h>
#include <ostream>

namespace brevant {

namespace {

struct Texts {
    std::string title;
    std::string explanation;
};

const Texts& textsOf(SkipReason reason) {
    using texts::kMachine;
    using texts::kSystem;
    static const Texts unsupported{
        "Image types this version does not compare",
        fmt::format("PSD, BMP and other image types are not compared yet, nor RAW files from "
                    "cameras {0} cannot read, nor JPEG XL where {0} cannot decode it. JPEG, PNG, "
                    "HEIC, TIFF, WebP, AVIF, GIF and camera RAW are.",
                    kMachine)};
    static const Texts unreadable{
        "Could not be read",
        fmt::format("{} refused to open these, usually because of their permissions.", kSystem)};
    static const Texts corrupt{
        "Damaged or not really an image",
        fmt::format("They have an image extension but {} cannot decode them, so they are never "
                    "suggested for removal.",
                    kSystem)};
    static const Texts cloud{
        "In the cloud, not downloaded",
        fmt::format("Their contents are not on {}. They were not downloaded to compare them.",
                    kMachine)};
    static const Texts empty{"Empty files", "Zero-byte files are never treated as photos."};
    static const Texts link{"Aliases (symbolic links), not followed",
                            "A link points somewhere else; the scan never follows one, so "
                            "nothing outside your folders is reached."};
    static const Texts changed{"Changed while being compared",
                               "The file changed between reading and comparing it, so it was "
                               "left out rather than trusted."};
    switch (reason) {
    case SkipReason::unsupportedFormat:
        return unsupported;
    case SkipReason::unreadable:
        return unreadable;
    case SkipReason::corrupt:
        return corrupt;
    case SkipReason::cloudPlaceholder:
        return cloud;
    case SkipReason::empty:
        return empty;
    case SkipReason::symbolicLink:
        return link;
    case SkipReason::changedDuringScan:
        return changed;
    }
    return unreadable;
}

} // namespace

std::string_view rawValue(SkipReason reason) {
    switch (reason) {
    case SkipReason::unsupportedFormat:
        return "unsupportedFormat";
    case SkipReason::unreadable:
        return "unreadable";
    case SkipReason::corrupt:
        return "corrupt";
    case SkipReason::cloudPlaceholder:
        return "cloudPlaceholder";
    case SkipReason::empty:
        return "empty";
    case SkipReason::symbolicLink:
        return "symbolicLink";
    case SkipReason::changedDuringScan:
        return "changedDuringScan";
    }
    return "unreadable";
}

const std::string& title(SkipReason reason) {
    return textsOf(reason).title;
}

const std::string& explanation(SkipReason reason) {
    return textsOf(reason).explanation;
}

void PrintTo(SkipReason reason, std::ostream* os) {
    *os << rawValue(reason);
}

void to_json(nlohmann::ordered_json& j, const SkippedFile& value) {
    j = json::Json::object();
    j["path"] = json::text(value.path);
    j["reason"] = json::enumValue(value.reason);
    json::putOptionalText(j, "detail", value.detail);
}

void from_json(const nlohmann::ordered_json& j, SkippedFile& value) {
    value.path = json::getText(j, "path");
    value.reason = json::getEnum<SkipReason>(j, "reason");
    value.detail = json::getOptionalText(j, "detail");
}

} // namespace brevant
