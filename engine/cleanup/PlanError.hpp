#pragma once

#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>

namespace brevant {

// Why the marks could not be made into a plan. Planning stops at the first
// one; nothing partial is returned.
struct PlanError {
    enum class Kind {
        groupWithoutKeeper,
        markedButNotAllowed,
        nothingMarked,
    };

    Kind kind = Kind::nothingMarked;
    // groupWithoutKeeper: the group's id.
    std::string groupID;
    // markedButNotAllowed: the marked copy and why it must stay.
    std::string path;
    std::string reason;

    // The reasons of markedButNotAllowed other than a fixed keep reason.
    static constexpr std::string_view kLocked = "it is locked";
    static constexpr std::string_view kProtected = "it is in a protected folder";

    [[nodiscard]] static PlanError groupWithoutKeeper(std::string groupID);
    [[nodiscard]] static PlanError markedButNotAllowed(std::string path, std::string reason);
    [[nodiscard]] static PlanError nothingMarked();

    // The sentence shown to the user: "Group 0123456789ab would keep no
    // copy.", "IMG_1.jpg cannot be moved: it is locked", "Nothing is marked."
    [[nodiscard]] std::string description() const;

    friend bool operator==(const PlanError&, const PlanError&) = default;
};

template <> struct EnumCases<PlanError::Kind> {
    using Kind = PlanError::Kind;
    static constexpr std::array kAll{Kind::groupWithoutKeeper, Kind::markedButNotAllowed,
                                     Kind::nothingMarked};
};

[[nodiscard]] std::string_view rawValue(PlanError::Kind kind);
void PrintTo(PlanError::Kind kind, std::ostream* os);
void PrintTo(const PlanError& error, std::ostream* os);

} // namespace brevant
