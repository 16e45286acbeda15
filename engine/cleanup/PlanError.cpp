#include "PlanError.hpp"

#include "engine/support/PathNames.hpp"

#include <ostream>
#include <utility>

namespace brevant {

namespace {

constexpr std::size_t kShownIDCharacters = 12;

// The first `count` characters, never cutting a UTF-8 sequence in two.
std::string_view leadingCharacters(std::string_view text, std::size_t count) {
    std::size_t end = 0;
    for (std::size_t taken = 0; end < text.size() && taken < count; ++taken) {
        ++end;
        while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
            ++end;
        }
    }
    return text.substr(0, end);
}

} // namespace

PlanError PlanError::groupWithoutKeeper(std::string groupID) {
    PlanError error;
    error.kind = Kind::groupWithoutKeeper;
    error.groupID = std::move(groupID);
    return error;
}

PlanError PlanError::markedButNotAllowed(std::string path, std::string reason) {
    PlanError error;
    error.kind = Kind::markedButNotAllowed;
    error.path = std::move(path);
    error.reason = std::move(reason);
    return error;
}

PlanError PlanError::nothingMarked() {
    return {};
}

std::string PlanError::description() const {
    switch (kind) {
    case Kind::groupWithoutKeeper:
        return "Group " + std::string(leadingCharacters(groupID, kShownIDCharacters)) +
               " would keep no copy.";
    case Kind::markedButNotAllowed:
        return PathNames::lastComponent(path) + " cannot be moved: " + reason;
    case Kind::nothingMarked:
        return "Nothing is marked.";
    }
    return "Nothing is marked.";
}

std::string_view rawValue(PlanError::Kind kind) {
    using Kind = PlanError::Kind;
    switch (kind) {
    case Kind::groupWithoutKeeper:
        return "groupWithoutKeeper";
    case Kind::markedButNotAllowed:
        return "markedButNotAllowed";
    case Kind::nothingMarked:
        return "nothingMarked";
    }
    return "nothingMarked";
}

void PrintTo(PlanError::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const PlanError& error, std::ostream* os) {
    *os << rawValue(error.kind) << "(\"" << error.description() << "\")";
}

} // namespace brevant
