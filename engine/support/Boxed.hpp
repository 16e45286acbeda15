#pragma once

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace brevant {

// An optional value kept on the heap. For the fields of records held by the
// million that are set on few of them (a library item's or a catalog's
// reference on a photo): std::optional reserves the whole value in every
// record, this only a pointer. Copies copy the value.
template <class T> class Boxed {
public:
    Boxed() = default;

    // Converting as std::optional<T> does, so that fields of this type take
    // the same values.
    // NOLINTNEXTLINE(google-explicit-constructor)
    Boxed(std::nullopt_t /*absent*/) {}

    template <class U = T>
        requires(std::is_constructible_v<T, U &&> &&
                 !std::is_same_v<std::remove_cvref_t<U>, Boxed> &&
                 !std::is_same_v<std::remove_cvref_t<U>, std::optional<T>> &&
                 !std::is_same_v<std::remove_cvref_t<U>, std::nullopt_t>)
    // NOLINTNEXTLINE(google-explicit-constructor)
    Boxed(U&& value)
        : value_(std::make_unique<T>(std::forward<U>(value))) {}

    // NOLINTNEXTLINE(google-explicit-constructor)
    Boxed(std::optional<T> value) {
        if (value) {
            value_ = std::make_unique<T>(std::move(*value));
        }
    }

    Boxed(const Boxed& other)
        : value_(other.value_ ? std::make_unique<T>(*other.value_) : nullptr) {}

    Boxed(Boxed&&) noexcept = default;

    Boxed& operator=(const Boxed& other) {
        if (this != &other) {
            value_ = other.value_ ? std::make_unique<T>(*other.value_) : nullptr;
        }
        return *this;
    }

    Boxed& operator=(Boxed&&) noexcept = default;
    ~Boxed() = default;

    [[nodiscard]] bool hasValue() const { return value_ != nullptr; }

    explicit operator bool() const { return hasValue(); }

    // Only when present, as for std::optional.
    [[nodiscard]] const T& operator*() const { return *value_; }

    [[nodiscard]] T& operator*() { return *value_; }

    const T* operator->() const { return value_.get(); }

    T* operator->() { return value_.get(); }

    [[nodiscard]] std::optional<T> get() const {
        return value_ ? std::optional<T>(*value_) : std::nullopt;
    }

    // NOLINTNEXTLINE(google-explicit-constructor)
    operator std::optional<T>() const { return get(); }

    void reset() { value_.reset(); }

    friend bool operator==(const Boxed& x, const Boxed& y) {
        if (!x.value_ || !y.value_) {
            return !x.value_ && !y.value_;
        }
        return *x.value_ == *y.value_;
    }

    friend bool operator==(const Boxed& x, std::nullopt_t /*absent*/) { return !x.value_; }

private:
    std::unique_ptr<T> value_;
};

} // namespace brevant
