#pragma once

#include "engine/support/Date.hpp"
#include "engine/support/RawValue.hpp"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// Helpers for the stored documents. Every text goes through path_text so that
// file names which are not valid UTF-8 survive a round trip; dates are
// seconds since 1 January 2001; enumerations are their raw strings; absent
// optionals are left out. Getters throw on a malformed document; each
// module's public decode function catches that and answers with an error.
namespace brevant::json {

using Json = nlohmann::ordered_json;

struct DecodeError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

[[nodiscard]] const Json& field(const Json& j, std::string_view key);
[[nodiscard]] bool has(const Json& j, std::string_view key);

[[nodiscard]] Json text(std::string_view s);
[[nodiscard]] std::string toText(const Json& j);
[[nodiscard]] std::string getText(const Json& j, std::string_view key);
void putOptionalText(Json& j, std::string_view key, const std::optional<std::string>& s);
[[nodiscard]] std::optional<std::string> getOptionalText(const Json& j, std::string_view key);

[[nodiscard]] Json textList(const std::vector<std::string>& list);
[[nodiscard]] std::vector<std::string> getTextList(const Json& j, std::string_view key);

[[nodiscard]] Json date(Date d);
[[nodiscard]] Date getDate(const Json& j, std::string_view key);
void putOptionalDate(Json& j, std::string_view key, const std::optional<Date>& d);
[[nodiscard]] std::optional<Date> getOptionalDate(const Json& j, std::string_view key);

// An integer of T's range. Anything else is refused rather than converted:
// a fraction would be cut and an out-of-range number is undefined behaviour.
template <class T> [[nodiscard]] T toInteger(const Json& j) {
    if (j.is_number_unsigned()) {
        auto value = j.get<std::uint64_t>();
        if (std::in_range<T>(value)) {
            return static_cast<T>(value);
        }
    } else if (j.is_number_integer()) {
        auto value = j.get<std::int64_t>();
        if (std::in_range<T>(value)) {
            return static_cast<T>(value);
        }
    }
    throw DecodeError("expected an integer in range");
}

template <class T> [[nodiscard]] T get(const Json& j, std::string_view key) {
    if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
        return toInteger<T>(field(j, key));
    } else {
        return field(j, key).get<T>();
    }
}

template <class T> void putOptional(Json& j, std::string_view key, const std::optional<T>& value) {
    if (value) {
        j[std::string(key)] = *value;
    }
}

template <class T> [[nodiscard]] std::optional<T> getOptional(const Json& j, std::string_view key) {
    if (!has(j, key)) {
        return std::nullopt;
    }
    return get<T>(j, key);
}

template <class E> [[nodiscard]] Json enumValue(E value) {
    return Json(std::string(rawValue(value)));
}

template <class E> [[nodiscard]] E toEnum(const Json& j) {
    auto raw = j.get<std::string>();
    auto value = fromRawValue<E>(raw);
    if (!value) {
        throw DecodeError("unknown value \"" + raw + "\"");
    }
    return *value;
}

template <class E> [[nodiscard]] E getEnum(const Json& j, std::string_view key) {
    return toEnum<E>(field(j, key));
}

// Parses a whole document; throws DecodeError on bad syntax.
[[nodiscard]] Json parse(std::string_view document);

} // namespace brevant::json
