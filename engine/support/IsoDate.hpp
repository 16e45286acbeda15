#pragma once

#include "engine/support/Date.hpp"
#include "engine/support/Json.hpp"

#include <optional>
#include <string>
#include <string_view>

// Dates as ISO 8601 text in whole seconds, UTC: 2026-11-14T21:49:44Z. The
// cleanup records use this form so that a journal can be read by a person and
// by any tool; the fraction of a second is dropped (rounded towards the
// past), so a date read back is the written one to the second.
namespace brevant::iso_date {

// Years 0000 to 9999; a date outside them is written as the nearest end.
[[nodiscard]] std::string text(Date date);

// Exactly the form above; nothing for any other text or an impossible date.
[[nodiscard]] std::optional<Date> parse(std::string_view text);

} // namespace brevant::iso_date

namespace brevant::json {

[[nodiscard]] Json isoDate(Date d);
[[nodiscard]] Date getIsoDate(const Json& j, std::string_view key);
void putOptionalIsoDate(Json& j, std::string_view key, const std::optional<Date>& d);
[[nodiscard]] std::optional<Date> getOptionalIsoDate(const Json& j, std::string_view key);

} // namespace brevant::json
