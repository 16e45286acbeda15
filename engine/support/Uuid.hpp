#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// The identifier of a plan, an approval or a record. Stored and shown in its
// canonical text, upper case: 8-4-4-4-12 hexadecimal digits.
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    // A new random identifier.
    [[nodiscard]] static Uuid make();

    // Reads the canonical text in either case; nothing for anything else.
    [[nodiscard]] static std::optional<Uuid> parse(std::string_view text);

    [[nodiscard]] std::string text() const;

    friend bool operator==(const Uuid&, const Uuid&) = default;
    friend auto operator<=>(const Uuid&, const Uuid&) = default;
};

void PrintTo(const Uuid& uuid, std::ostream* os);

// Coded as its canonical text.
void to_json(nlohmann::ordered_json& j, const Uuid& value);
void from_json(const nlohmann::ordered_json& j, Uuid& value);

} // namespace brevant

template <> struct std::hash<brevant::Uuid> {
    std::size_t operator()(const brevant::Uuid& uuid) const noexcept {
        return std::hash<std::string_view>{}(
            std::string_view(reinterpret_cast<const char*>(uuid.bytes.data()), uuid.bytes.size()));
    }
};
