#include "MarkRefusal.hpp"

#include "engine/review/FolderPaths.hpp"

#include <ostream>
#include <utility>

namespace brevant {

MarkRefusal MarkRefusal::protectedFolder(std::string root) {
    return {Kind::protectedFolder, std::move(root)};
}

MarkRefusal MarkRefusal::fixed(std::string reason) {
    return {Kind::fixed, std::move(reason)};
}

MarkRefusal MarkRefusal::locked() {
    return {Kind::locked, {}};
}

MarkRefusal MarkRefusal::lastCopy() {
    return {Kind::lastCopy, {}};
}

MarkRefusal MarkRefusal::notFound() {
    return {Kind::notFound, {}};
}

std::string MarkRefusal::message() const {
    switch (kind) {
    case Kind::protectedFolder:
        return "It is in " + folder_paths::lastComponent(detail) + ", a folder you protect.";
    case Kind::fixed:
        return detail + ".";
    case Kind::locked:
        return "You locked this one to keep it. Unlock it first.";
    case Kind::lastCopy:
        return "Every group keeps at least one copy. Unmark another copy first.";
    case Kind::notFound:
        return "That picture is not in these results.";
    }
    return "That picture is not in these results.";
}

std::string_view rawValue(MarkRefusal::Kind kind) {
    using Kind = MarkRefusal::Kind;
    switch (kind) {
    case Kind::protectedFolder:
        return "protectedFolder";
    case Kind::fixed:
        return "fixed";
    case Kind::locked:
        return "locked";
    case Kind::lastCopy:
        return "lastCopy";
    case Kind::notFound:
        return "notFound";
    }
    return "notFound";
}

void PrintTo(MarkRefusal::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const MarkRefusal& refusal, std::ostream* os) {
    *os << rawValue(refusal.kind);
    if (!refusal.detail.empty()) {
        *os << "(" << refusal.detail << ")";
    }
}

} // namespace brevant
