#include "MatchKind.hpp"

#include <ostream>

namespace brevant {

std::string_view rawValue(MatchKind kind) {
    switch (kind) {
    case MatchKind::identical:
        return "identical";
    case MatchKind::similar:
        return "similar";
    case MatchKind::series:
        return "series";
    case MatchKind::liveMovie:
        return "liveMovie";
    }
    return "identical";
}

void PrintTo(MatchKind kind, std::ostream* os) {
    *os << rawValue(kind);
}

} // namespace brevant
