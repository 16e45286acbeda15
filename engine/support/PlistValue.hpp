#pragma once

#include "engine/support/Date.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace brevant {

// One value of a property list, independent of the library that reads and
// writes the file. Integers are 64-bit; unsigned values travel as their bit
// pattern. Dictionaries keep their keys in the order given.
class PlistValue {
public:
    using Array = std::vector<PlistValue>;
    using Dictionary = std::vector<std::pair<std::string, PlistValue>>;
    using Data = std::vector<std::uint8_t>;
    using Storage =
        std::variant<bool, std::int64_t, double, std::string, Data, Date, Array, Dictionary>;

    PlistValue()
        : storage_(false) {}

    // NOLINTBEGIN(google-explicit-constructor): values read as plain literals.
    PlistValue(bool value)
        : storage_(value) {}

    PlistValue(std::int64_t value)
        : storage_(value) {}

    PlistValue(int value)
        : storage_(static_cast<std::int64_t>(value)) {}

    PlistValue(std::uint64_t value)
        : storage_(static_cast<std::int64_t>(value)) {}

    PlistValue(double value)
        : storage_(value) {}

    PlistValue(std::string value)
        : storage_(std::move(value)) {}

    PlistValue(Data value)
        : storage_(std::move(value)) {}

    PlistValue(Date value)
        : storage_(value) {}

    PlistValue(Array value)
        : storage_(std::move(value)) {}

    PlistValue(Dictionary value)
        : storage_(std::move(value)) {}

    // NOLINTEND(google-explicit-constructor)

    [[nodiscard]] const Storage& storage() const { return storage_; }

    template <class T> [[nodiscard]] const T* as() const { return std::get_if<T>(&storage_); }

    // The value under `key` of a dictionary; nothing for another kind or a
    // missing key.
    [[nodiscard]] const PlistValue* find(std::string_view key) const;

    // Typed readings that answer nothing for a value of another kind.
    [[nodiscard]] std::optional<int> intValue() const;
    [[nodiscard]] std::optional<std::uint64_t> unsignedValue() const;
    // Reals, and integers read as reals.
    [[nodiscard]] std::optional<double> realValue() const;
    [[nodiscard]] std::optional<bool> boolValue() const;

    friend bool operator==(const PlistValue&, const PlistValue&) = default;

private:
    Storage storage_;
};

} // namespace brevant
