#include "CaptureOneRefusal.hpp"

#include "engine/catalogs/MarkTexts.hpp"
#include "engine/support/Texts.hpp"

#include <fmt/format.h>
#include <ostream>

namespace brevant {

std::string CaptureOneRefusal::text() const {
    switch (kind) {
    case Kind::untestedVersion:
        return fmt::format("This catalog is from a Capture One version {} has not been tested "
                           "with ({}), so it was not changed.",
                           texts::kApplication, detail);
    case Kind::backupFailed:
        return mark_texts::backupFailed(detail);
    case Kind::writeFailed:
        return mark_texts::writeFailed(detail);
    case Kind::approvalDoesNotMatch:
        return std::string(mark_texts::kApprovalDoesNotMatch);
    case Kind::notCaptureOnePhotos:
        return "Only photos from a Capture One catalog can be tagged there.";
    case Kind::captureOneOpen:
        return "Quit Capture One first. Its catalog is only changed while Capture One is "
               "closed.";
    case Kind::recordNotSaved:
        return mark_texts::recordNotSaved(detail);
    }
    return detail;
}

std::string_view rawValue(CaptureOneRefusal::Kind kind) {
    using Kind = CaptureOneRefusal::Kind;
    switch (kind) {
    case Kind::untestedVersion:
        return "untestedVersion";
    case Kind::backupFailed:
        return "backupFailed";
    case Kind::writeFailed:
        return "writeFailed";
    case Kind::approvalDoesNotMatch:
        return "approvalDoesNotMatch";
    case Kind::notCaptureOnePhotos:
        return "notCaptureOnePhotos";
    case Kind::captureOneOpen:
        return "captureOneOpen";
    case Kind::recordNotSaved:
        return "recordNotSaved";
    }
    return "writeFailed";
}

void PrintTo(CaptureOneRefusal::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const CaptureOneRefusal& refusal, std::ostream* os) {
    *os << rawValue(refusal.kind) << "(\"" << refusal.detail << "\")";
}

} // namespace brevant
