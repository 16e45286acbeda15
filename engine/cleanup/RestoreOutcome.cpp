#include "RestoreOutcome.hpp"

#include <ostream>
#include <utility>

namespace brevant {

RestoreOutcome RestoreOutcome::restored(std::string path) {
    return {.kind = Kind::restored, .path = std::move(path)};
}

RestoreOutcome RestoreOutcome::occupied(std::string path) {
    return {.kind = Kind::occupied, .path = std::move(path)};
}

RestoreOutcome RestoreOutcome::failed(std::string reason) {
    return {.kind = Kind::failed, .reason = std::move(reason)};
}

RestoreOutcome RestoreOutcome::notInTrash() {
    return {.kind = Kind::notInTrash};
}

std::string RestoreOutcome::message(std::string_view pictureName,
                                    std::string_view shownPath) const {
    switch (kind) {
    case Kind::restored:
        return std::string(pictureName) + " is back, at " +
               std::string(shownPath.empty() ? std::string_view(path) : shownPath) + ".";
    case Kind::occupied:
        return "A file has taken this picture's place since it was moved. It is never "
               "overwritten: put the picture back under another name, or use your file manager.";
    case Kind::failed:
        return reason + ". Your file manager's Restore from Trash may still work.";
    case Kind::notInTrash:
        return std::string(pictureName) +
               " is not in the Trash any more \u2014 it may have been emptied or put back "
               "already.";
    }
    return {};
}

std::string_view rawValue(RestoreOutcome::Kind kind) {
    using Kind = RestoreOutcome::Kind;
    switch (kind) {
    case Kind::restored:
        return "restored";
    case Kind::occupied:
        return "occupied";
    case Kind::failed:
        return "failed";
    case Kind::notInTrash:
        return "notInTrash";
    }
    return "notInTrash";
}

void PrintTo(RestoreOutcome::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const RestoreOutcome& outcome, std::ostream* os) {
    *os << rawValue(outcome.kind);
    if (!outcome.path.empty()) {
        *os << "(" << outcome.path << ")";
    }
    if (!outcome.reason.empty()) {
        *os << "(\"" << outcome.reason << "\")";
    }
}

} // namespace brevant
