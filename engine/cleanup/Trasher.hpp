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

// Moves items to the Trash in two steps, so that the cleanup can write down
// where an item is about to go before it goes, and puts them back. The
// cleanup logic depends only on this, so tests can stand in for the platform.
class Trasher {
public:
    Trasher() = default;
    Trasher(const Trasher&) = default;
    Trasher& operator=(const Trasher&) = default;
    Trasher(Trasher&&) = default;
    Trasher& operator=(Trasher&&) = default;
    virtual ~Trasher() = default;

    // The path in the Trash at which the item would lie; nothing is moved
    // or recorded yet.
    [[nodiscard]] virtual std::expected<std::string, TrashError>
    reserve(const std::string& path) const = 0;

    // Moves the item to the reserved place, never replacing anything
    // (EEXIST: taken since it was reserved). On an error the item is
    // untouched.
    [[nodiscard]] virtual std::expected<void, TrashError>
    moveInto(const std::string& path, const std::string& trashPath) const = 0;

    // Renames a trashed item to `destination` without replacing anything
    // (EEXIST: occupied, nothing moved) and drops its Trash record.
    [[nodiscard]] virtual std::expected<void, TrashError>
    putBack(const std::string& trashPath, const std::string& destination) const = 0;

    // Both steps, reserving again while a reserved place is taken meanwhile;
    // the item's path in the Trash.
    [[nodiscard]] std::expected<std::string, TrashError> trash(const std::string& path) const;
};

// The freedesktop.org Trash that desktop file managers and trash-cli share:
// the item is renamed into the Trash of its own volume, never copied.
class FileManagerTrasher final : public Trasher {
public:
    [[nodiscard]] std::expected<std::string, TrashError>
    reserve(const std::string& path) const override;
    [[nodiscard]] std::expected<void, TrashError>
    moveInto(const std::string& path, const std::string& trashPath) const override;
    [[nodiscard]] std::expected<void, TrashError>
    putBack(const std::string& trashPath, const std::string& destination) const override;
};

} // namespace brevant
