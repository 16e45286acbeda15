#include "ScanMode.hpp"

#include <ostream>

namespace brevant {

std::string_view rawValue(ScanMode::Kind kind) {
    switch (kind) {
    case ScanMode::Kind::identical:
        return "identical";
    case ScanMode::Kind::similar:
        return "similar";
    case ScanMode::Kind::series:
        return "series";
    case ScanMode::Kind::livePhotos:
        return "livePhotos";
    }
    return "identical";
}

void PrintTo(ScanMode::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const ScanMode& mode, std::ostream* os) {
    *os << rawValue(mode.kind);
    if (mode.kind == ScanMode::Kind::similar) {
        *os << " (" << rawValue(mode.preset) << ")";
    }
}

} // namespace brevant
