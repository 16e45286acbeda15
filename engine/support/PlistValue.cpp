#include "PlistValue.hpp"

#include <limits>

namespace brevant {

const PlistValue* PlistValue::find(std::string_view key) const {
    const Dictionary* dictionary = as<Dictionary>();
    if (dictionary == nullptr) {
        return nullptr;
    }
    for (const auto& [name, value] : *dictionary) {
        if (name == key) {
            return &value;
        }
    }
    return nullptr;
}

std::optional<int> PlistValue::intValue() const {
    const auto* value = as<std::int64_t>();
    if (value == nullptr || *value < std::numeric_limits<int>::min() ||
        *value > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(*value);
}

std::optional<std::uint64_t> PlistValue::unsignedValue() const {
    const auto* value = as<std::int64_t>();
    if (value == nullptr) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(*value);
}

std::optional<double> PlistValue::realValue() const {
    if (const auto* real = as<double>()) {
        return *real;
    }
    if (const auto* integer = as<std::int64_t>()) {
        return static_cast<double>(*integer);
    }
    return std::nullopt;
}

std::optional<bool> PlistValue::boolValue() const {
    const auto* value = as<bool>();
    return value != nullptr ? std::optional<bool>(*value) : std::nullopt;
}

} // namespace brevant
