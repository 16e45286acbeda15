#pragma once

#include "engine/support/Boxed.hpp"

#include <cstddef>
#include <functional>
#include <optional>
#include <type_traits>
#include <vector>

// Hashes of value records over all their fields, for the sets and maps that
// review and cleanup keep of them. Equal values hash alike; a record's
// std::hash lists every field, in declaration order.
namespace brevant::hashing {

inline void combine(std::size_t& seed, std::size_t value) {
    seed ^= value + 0x9E3779B97F4A7C15ULL + (seed << 6) + (seed >> 2);
}

// Declared together so that each can hash the others' contents.
template <class T> [[nodiscard]] std::size_t of(const T& value);
template <class T> [[nodiscard]] std::size_t of(const std::optional<T>& value);
template <class T> [[nodiscard]] std::size_t of(const std::vector<T>& values);
template <class T> [[nodiscard]] std::size_t of(const Boxed<T>& value);

template <class T> std::size_t of(const std::optional<T>& value) {
    // Absent and a present zero hash apart.
    return value ? of(*value) * 31 + 1 : 0;
}

template <class T> std::size_t of(const Boxed<T>& value) {
    // As the same optional would.
    return value ? of(*value) * 31 + 1 : 0;
}

template <class T> std::size_t of(const std::vector<T>& values) {
    std::size_t seed = values.size();
    for (const T& value : values) {
        combine(seed, of(value));
    }
    return seed;
}

template <class T> std::size_t of(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return std::hash<std::underlying_type_t<T>>{}(
            static_cast<std::underlying_type_t<T>>(value));
    } else {
        return std::hash<T>{}(value);
    }
}

template <class... T> [[nodiscard]] std::size_t all(const T&... values) {
    std::size_t seed = 0;
    (combine(seed, of(values)), ...);
    return seed;
}

} // namespace brevant::hashing
