#pragma once

#include "engine/platform/DataFolder.hpp"
#include "engine/platform/FileLock.hpp"

#include <expected>
#include <functional>
#include <optional>
#include <string>

namespace brevant {

// The one lock that every run changing pictures or Brevant's records in a
// data folder holds while it works: a cleanup, a Put Back, a change of the
// locks, a catalog marking or its undo. Two such runs never go on side by
// side, whether they come from the command line or the window; reading
// (history, scans) goes on beside them. The kernel gives the lock up when its
// process ends, so a crash never leaves the folder locked.
class ChangeLock {
public:
    // Why the lock was not taken.
    struct Refusal {
        enum class Kind {
            // Another run holds it.
            busy,
            // The lock file could not be made or opened.
            unavailable,
        };

        Kind kind = Kind::busy;
        // busy: the holding process and what it runs, when they can be told.
        std::optional<int> processID;
        std::optional<std::string> program;
        // unavailable: the errno.
        int code = 0;
        std::string folder;

        // A sentence for display; nothing was changed.
        [[nodiscard]] std::string message() const;
        // busy: the line shown while waiting for the holder.
        [[nodiscard]] std::string waitingMessage() const;

        friend bool operator==(const Refusal&, const Refusal&) = default;
    };

    // Called while waiting for another run, with who holds the lock, about
    // ten times a second; false stops waiting (the run is refused as busy).
    using Waiting = std::function<bool(const Refusal& holder)>;

    // Takes the lock at once or is refused.
    [[nodiscard]] static std::expected<ChangeLock, Refusal>
    tryTake(const platform::DataFolder& data);
    // Waits while another run holds it and `waiting` agrees; without
    // `waiting`, the same as tryTake.
    [[nodiscard]] static std::expected<ChangeLock, Refusal> take(const platform::DataFolder& data,
                                                                 const Waiting& waiting);

    // Who holds the lock now; nothing when nobody does.
    [[nodiscard]] static std::optional<Refusal> holder(const platform::DataFolder& data);

private:
    explicit ChangeLock(platform::FileLock lock)
        : lock_(std::move(lock)) {}

    platform::FileLock lock_;
};

} // namespace brevant
