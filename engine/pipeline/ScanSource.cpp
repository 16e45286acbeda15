#include "ScanSource.hpp"

#include <ostream>

namespace brevant {

std::string_view rawValue(ScanSource::Kind kind) {
    switch (kind) {
    case ScanSource::Kind::folders:
        return "folders";
    case ScanSource::Kind::catalog:
        return "catalog";
    }
    return "folders";
}

void PrintTo(ScanSource::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

} // namespace brevant
