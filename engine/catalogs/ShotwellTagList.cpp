#include "ShotwellTagList.hpp"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace brevant {

namespace {

constexpr std::string_view kPhotoPrefix = "thumb";
constexpr std::size_t kHexDigits = 16;

std::optional<std::int64_t> number(const std::string& digits, int base) {
    std::uint64_t value = 0;
    const char* end = digits.c_str() + digits.size();
    auto [stop, error] = std::from_chars(digits.c_str(), end, value, base);
    if (digits.empty() || error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(value);
}

} // namespace

ShotwellTagList ShotwellTagList::parse(std::string_view text) {
    ShotwellTagList list;
    std::size_t start = 0;
    while (start < text.size()) {
        auto comma = text.find(',', start);
        auto end = comma == std::string_view::npos ? text.size() : comma;
        if (end > start) {
            list.entries.emplace_back(text.substr(start, end - start));
        }
        start = end + 1;
    }
    return list;
}

std::string ShotwellTagList::text() const {
    std::string result;
    for (const auto& entry : entries) {
        result += entry;
        result += ',';
    }
    return result;
}

std::string ShotwellTagList::sourceID(std::int64_t photoID) {
    return fmt::format("{}{:016x}", kPhotoPrefix, static_cast<std::uint64_t>(photoID));
}

std::optional<std::int64_t> ShotwellTagList::photoID(std::string_view entry) {
    if (entry.starts_with(kPhotoPrefix) && entry.size() == kPhotoPrefix.size() + kHexDigits) {
        return number(std::string(entry.substr(kPhotoPrefix.size())), 16);
    }
    return number(std::string(entry), 10);
}

bool ShotwellTagList::containsPhoto(std::int64_t photoID) const {
    return std::ranges::any_of(entries, [photoID](const std::string& entry) {
        return ShotwellTagList::photoID(entry) == photoID;
    });
}

bool ShotwellTagList::addPhoto(std::int64_t photoID) {
    if (containsPhoto(photoID)) {
        return false;
    }
    entries.push_back(sourceID(photoID));
    return true;
}

bool ShotwellTagList::removePhoto(std::int64_t photoID) {
    return std::erase(entries, sourceID(photoID)) > 0;
}

} // namespace brevant
