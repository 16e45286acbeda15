#include "CatalogReadError.hpp"

#include <fmt/format.h>
#include <ostream>

namespace brevant {

std::string CatalogReadError::text() const {
    switch (kind) {
    case Kind::unreadable:
        return "The catalog could not be read: " + detail;
    case Kind::unknownLayout:
        return fmt::format("This catalog is laid out in a way this version does not know ({}), "
                           "so it was left alone.",
                           detail);
    case Kind::notACatalog:
        return detail;
    }
    return detail;
}

std::string_view rawValue(CatalogReadError::Kind kind) {
    using Kind = CatalogReadError::Kind;
    switch (kind) {
    case Kind::unreadable:
        return "unreadable";
    case Kind::unknownLayout:
        return "unknownLayout";
    case Kind::notACatalog:
        return "notACatalog";
    }
    return "unreadable";
}

void PrintTo(CatalogReadError::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const CatalogReadError& error, std::ostream* os) {
    *os << rawValue(error.kind) << "(\"" << error.detail << "\")";
}

} // namespace brevant
