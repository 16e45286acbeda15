#pragma once

#include <expected>
#include <iosfwd>
#include <optional>
#include <string>

namespace brevant {

// Why the system would not move an item to the Trash: its errno (EROFS,
// ENOENT, EXDEV, ...) and the system's own description of it.
struct TrashError {
    int code = 0;
    std::string description;

    [[nodiscard]] static TrashError fromErrno(int code);

    friend bool operator==(const TrashError&, const TrashError&) = default;
};

void PrintTo(const TrashError& error, std::ostream* out);

// Moves one item to the Trash. The cleanup logic depends only on this, so
// tests can stand in for the platform.
class Trasher {
public:
    Trasher() = default;
    Trasher(const Trasher&) = default;
    Trasher& operator=(const Trasher&) = default;
    Trasher(Trasher&&) = default;
    Trasher& operator=(Trasher&&) = default;
    virtual ~Trasher() = default;

    // The path at which the item now lies in the Trash, when the platform
    // says; an error when it was not moved, in which case it is untouched.
    [[nodiscard]] virtual std::expected<std::optional<std::string>, TrashError>
    trash(const std::string& path) const = 0;
};

// The freedesktop.org Trash that desktop file managers and trash-cli share:
// the item is renamed into the Trash of its own volume, never copied.
class FileManagerTrasher final : public Trasher {
public:
    [[nodiscard]] std::expected<std::optional<std::string>, TrashError>
    trash(const std::string& path) const override;
};

} // namespace brevant
