#pragma once

#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>

namespace brevant {

// What one Put Back did. Every case but `restored` leaves the picture where
// it was, in the Trash, and the destination untouched.
struct RestoreOutcome {
    enum class Kind {
        // The picture is back, at `path`.
        restored,
        // Something is now at `path`; nothing was moved.
        occupied,
        // The move was not possible; `reason` says why.
        failed,
        // The picture is no longer in the Trash at the recorded place.
        notInTrash,
    };

    Kind kind = Kind::notInTrash;
    // restored and occupied.
    std::string path;
    // failed: a sentence without its full stop.
    std::string reason;

    [[nodiscard]] static RestoreOutcome restored(std::string path);
    [[nodiscard]] static RestoreOutcome occupied(std::string path);
    [[nodiscard]] static RestoreOutcome failed(std::string reason);
    [[nodiscard]] static RestoreOutcome notInTrash();

    // What the interface says of it, for the picture named `pictureName`;
    // `shownPath`, when given, is how `path` is shown (shortened, its odd
    // bytes escaped).
    [[nodiscard]] std::string message(std::string_view pictureName,
                                      std::string_view shownPath = {}) const;

    friend bool operator==(const RestoreOutcome&, const RestoreOutcome&) = default;
};

template <> struct EnumCases<RestoreOutcome::Kind> {
    using Kind = RestoreOutcome::Kind;
    static constexpr std::array kAll{Kind::restored, Kind::occupied, Kind::failed,
                                     Kind::notInTrash};
};

[[nodiscard]] std::string_view rawValue(RestoreOutcome::Kind kind);
void PrintTo(RestoreOutcome::Kind kind, std::ostream* os);
void PrintTo(const RestoreOutcome& outcome, std::ostream* os);

} // namespace brevant
