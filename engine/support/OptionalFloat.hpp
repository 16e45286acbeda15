#pragma once

#include <cmath>
#include <limits>
#include <optional>

namespace brevant {

// An optional float in the space of a float, for records kept by the
// million: a quiet NaN stands for absent, so a NaN value reads as absent.
class OptionalFloat {
public:
    constexpr OptionalFloat() = default;

    // Converting as std::optional<float> does, so that fields of this type
    // take the same values.
    // NOLINTNEXTLINE(google-explicit-constructor)
    constexpr OptionalFloat(std::nullopt_t /*absent*/) {}

    // NOLINTNEXTLINE(google-explicit-constructor)
    constexpr OptionalFloat(float value)
        : value_(value) {}

    // NOLINTNEXTLINE(google-explicit-constructor)
    constexpr OptionalFloat(std::optional<float> value)
        : value_(value.value_or(kAbsent)) {}

    [[nodiscard]] bool hasValue() const { return !std::isnan(value_); }

    explicit operator bool() const { return hasValue(); }

    // Only when present, as for std::optional.
    [[nodiscard]] float operator*() const { return value_; }

    [[nodiscard]] std::optional<float> get() const {
        return hasValue() ? std::optional(value_) : std::nullopt;
    }

    void reset() { value_ = kAbsent; }

    friend bool operator==(OptionalFloat x, OptionalFloat y) { return x.get() == y.get(); }

private:
    static constexpr float kAbsent = std::numeric_limits<float>::quiet_NaN();
    float value_ = kAbsent;
};

} // namespace brevant
