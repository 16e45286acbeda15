#include "Relationship.hpp"

#include <ostream>

namespace brevant {

std::string_view rawValue(Relationship relationship) {
    switch (relationship) {
    case Relationship::sidecar:
        return "sidecar";
    case Relationship::livePhoto:
        return "livePhoto";
    case Relationship::rawPair:
        return "rawPair";
    case Relationship::editedOriginal:
        return "editedOriginal";
    }
    return "sidecar";
}

std::string_view reason(Relationship relationship) {
    switch (relationship) {
    case Relationship::sidecar:
        return "Has a sidecar file (.xmp or .aae) beside it, so it is kept with it";
    case Relationship::livePhoto:
        return "Part of a Live Photo (a .mov with the same name), so it is kept";
    case Relationship::rawPair:
        return "Has a RAW file with the same name, so it is kept with it";
    case Relationship::editedOriginal:
        return "Part of an original and edited pair, so it is kept";
    }
    return "";
}

void PrintTo(Relationship relationship, std::ostream* os) {
    *os << rawValue(relationship);
}

} // namespace brevant
