#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace brevant {

// Each stored or shown enumeration specialises this with the list of its
// cases and provides `rawValue(E)`; the generic lookup below then turns raw
// strings back into cases.
template <class E> struct EnumCases;

template <class E> [[nodiscard]] std::optional<E> fromRawValue(std::string_view raw) {
    for (E value : EnumCases<E>::kAll) {
        if (rawValue(value) == raw) {
            return value;
        }
    }
    return std::nullopt;
}

} // namespace brevant
