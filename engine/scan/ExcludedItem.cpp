#include "ExcludedItem.hpp"

#include "engine/support/Json.hpp"

#include <ostream>

namespace brevant {

std::string_view rawValue(ExcludedItem::Kind kind) {
    using Kind = ExcludedItem::Kind;
    switch (kind) {
    case Kind::managedLibrary:
        return "managedLibrary";
    case Kind::package:
        return "package";
    case Kind::unreadableFolder:
        return "unreadableFolder";
    case Kind::refusedRoot:
        return "refusedRoot";
    case Kind::overlappingRoot:
        return "overlappingRoot";
    }
    return "refusedRoot";
}

void PrintTo(ExcludedItem::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void to_json(nlohmann::ordered_json& j, const ExcludedItem& value) {
    j = {{"path", json::text(value.path)},
         {"kind", json::enumValue(value.kind)},
         {"detail", json::text(value.detail)}};
}

void from_json(const nlohmann::ordered_json& j, ExcludedItem& value) {
    value.path = json::getText(j, "path");
    value.kind = json::getEnum<ExcludedItem::Kind>(j, "kind");
    value.detail = json::getText(j, "detail");
}

} // namespace brevant
