#include "Uuid.hpp"

#include "engine/support/Json.hpp"

#include <ostream>
#include <uuid/uuid.h>

namespace brevant {

namespace {

constexpr std::size_t kTextLength = 36;

} // namespace

Uuid Uuid::make() {
    Uuid uuid;
    ::uuid_generate_random(uuid.bytes.data());
    return uuid;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    // uuid_parse reads a C string; the length check first keeps an embedded
    // NUL or a longer text from passing as a shorter one.
    if (text.size() != kTextLength) {
        return std::nullopt;
    }
    std::string terminated(text);
    Uuid uuid;
    if (::uuid_parse(terminated.c_str(), uuid.bytes.data()) != 0) {
        return std::nullopt;
    }
    return uuid;
}

std::string Uuid::text() const {
    std::array<char, kTextLength + 1> buffer{};
    ::uuid_unparse_upper(bytes.data(), buffer.data());
    return {buffer.data(), kTextLength};
}

void PrintTo(const Uuid& uuid, std::ostream* os) {
    *os << uuid.text();
}

void to_json(nlohmann::ordered_json& j, const Uuid& value) {
    j = value.text();
}

void from_json(const nlohmann::ordered_json& j, Uuid& value) {
    auto uuid = Uuid::parse(j.get<std::string>());
    if (!uuid) {
        throw json::DecodeError("not a UUID");
    }
    value = *uuid;
}

} // namespace brevant
