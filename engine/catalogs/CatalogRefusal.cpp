#include "CatalogRefusal.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/MarkTexts.hpp"
#include "engine/support/Texts.hpp"

#include <fmt/format.h>
#include <ostream>

namespace brevant {

std::string CatalogRefusal::text() const {
    const CatalogKindTexts& texts = CatalogKindTexts::of(application);
    switch (kind) {
    case Kind::untestedVersion:
        return fmt::format("This catalog is from a {} version {} has not been tested with ({}), "
                           "so it was not changed.",
                           texts.name, texts::kApplication, detail);
    case Kind::backupFailed:
        return mark_texts::backupFailed(detail);
    case Kind::writeFailed:
        return mark_texts::writeFailed(detail);
    case Kind::approvalDoesNotMatch:
        return std::string(mark_texts::kApprovalDoesNotMatch);
    case Kind::notCatalogPhotos:
        return std::string(texts.notCatalogPhotos);
    case Kind::applicationOpen:
        return std::string(texts.applicationOpen);
    case Kind::recordNotSaved:
        return mark_texts::recordNotSaved(detail);
    case Kind::changesBusy:
        return detail;
    }
    return detail;
}

std::string_view rawValue(CatalogRefusal::Kind kind) {
    using Kind = CatalogRefusal::Kind;
    switch (kind) {
    case Kind::untestedVersion:
        return "untestedVersion";
    case Kind::backupFailed:
        return "backupFailed";
    case Kind::writeFailed:
        return "writeFailed";
    case Kind::approvalDoesNotMatch:
        return "approvalDoesNotMatch";
    case Kind::notCatalogPhotos:
        return "notCatalogPhotos";
    case Kind::applicationOpen:
        return "applicationOpen";
    case Kind::recordNotSaved:
        return "recordNotSaved";
    case Kind::changesBusy:
        return "changesBusy";
    }
    return "writeFailed";
}

void PrintTo(CatalogRefusal::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const CatalogRefusal& refusal, std::ostream* os) {
    PrintTo(refusal.application, os);
    *os << ' ' << rawValue(refusal.kind) << "(\"" << refusal.detail << "\")";
}

} // namespace brevant
