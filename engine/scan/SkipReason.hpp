#pragma once

#include "engine/support/Hashing.hpp"
#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// Why a file with a picture extension was left out of a scan.
enum class SkipReason {
    unsupportedFormat,
    unreadable,
    corrupt,
    cloudPlaceholder,
    empty,
    symbolicLink,
    changedDuringScan,
};

template <> struct EnumCases<SkipReason> {
    static constexpr std::array kAll{
        SkipReason::unsupportedFormat, SkipReason::unreadable, SkipReason::corrupt,
        SkipReason::cloudPlaceholder,  SkipReason::empty,      SkipReason::symbolicLink,
        SkipReason::changedDuringScan};
};

[[nodiscard]] std::string_view rawValue(SkipReason reason);
[[nodiscard]] const std::string& title(SkipReason reason);
[[nodiscard]] const std::string& explanation(SkipReason reason);
void PrintTo(SkipReason reason, std::ostream* os);

struct SkippedFile {
    std::string path;
    SkipReason reason = SkipReason::unreadable;
    // A further word, such as the system's error text.
    std::optional<std::string> detail;

    friend bool operator==(const SkippedFile&, const SkippedFile&) = default;
};

void to_json(nlohmann::ordered_json& j, const SkippedFile& value);
void from_json(const nlohmann::ordered_json& j, SkippedFile& value);

} // namespace brevant

template <> struct std::hash<brevant::SkippedFile> {
    std::size_t operator()(const brevant::SkippedFile& v) const noexcept {
        return brevant::hashing::all(v.path, v.reason, v.detail);
    }
};
