#include "LightroomRefusal.hpp"

#include "engine/catalogs/MarkTexts.hpp"
#include "engine/support/Texts.hpp"

#include <fmt/format.h>
#include <ostream>

namespace brevant {

std::string LightroomRefusal::text() const {
    switch (kind) {
    case Kind::untestedVersion:
        return fmt::format(
            "This catalog is from a Lightroom Classic version {} has not been tested "
            "with ({}), so it was not changed.",
            texts::kApplication, detail);
    case Kind::backupFailed:
        return mark_texts::backupFailed(detail);
    case Kind::writeFailed:
        return mark_texts::writeFailed(detail);
    case Kind::approvalDoesNotMatch:
        return std::string(mark_texts::kApprovalDoesNotMatch);
    case Kind::notLightroomPhotos:
        return "Only photos from a Lightroom Classic catalog can be marked Rejected.";
    case Kind::lightroomOpen:
        return "Quit Lightroom Classic first. Its catalog is only changed while Lightroom is "
               "closed.";
    case Kind::recordNotSaved:
        return mark_texts::recordNotSaved(detail);
    }
    return detail;
}

std::string_view rawValue(LightroomRefusal::Kind kind) {
    using Kind = LightroomRefusal::Kind;
    switch (kind) {
    case Kind::untestedVersion:
        return "untestedVersion";
    case Kind::backupFailed:
        return "backupFailed";
    case Kind::writeFailed:
        return "writeFailed";
    case Kind::approvalDoesNotMatch:
        return "approvalDoesNotMatch";
    case Kind::notLightroomPhotos:
        return "notLightroomPhotos";
    case Kind::lightroomOpen:
        return "lightroomOpen";
    case Kind::recordNotSaved:
        return "recordNotSaved";
    }
    return "writeFailed";
}

void PrintTo(LightroomRefusal::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const LightroomRefusal& refusal, std::ostream* os) {
    *os << rawValue(refusal.kind) << "(\"" << refusal.detail << "\")";
}

} // namespace brevant
