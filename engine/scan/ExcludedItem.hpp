#pragma once

#include "engine/support/Hashing.hpp"
#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace brevant {

// A folder or root left out as a whole.
struct ExcludedItem {
    enum class Kind {
        managedLibrary,
        package,
        unreadableFolder,
        refusedRoot,
        overlappingRoot,
    };

    std::string path;
    Kind kind = Kind::refusedRoot;
    // The sentence shown to the user.
    std::string detail;

    friend bool operator==(const ExcludedItem&, const ExcludedItem&) = default;
};

template <> struct EnumCases<ExcludedItem::Kind> {
    using Kind = ExcludedItem::Kind;
    static constexpr std::array kAll{Kind::managedLibrary, Kind::package, Kind::unreadableFolder,
                                     Kind::refusedRoot, Kind::overlappingRoot};
};

[[nodiscard]] std::string_view rawValue(ExcludedItem::Kind kind);
void PrintTo(ExcludedItem::Kind kind, std::ostream* os);

void to_json(nlohmann::ordered_json& j, const ExcludedItem& value);
void from_json(const nlohmann::ordered_json& j, ExcludedItem& value);

} // namespace brevant

template <> struct std::hash<brevant::ExcludedItem> {
    std::size_t operator()(const brevant::ExcludedItem& v) const noexcept {
        return brevant::hashing::all(v.path, v.kind, v.detail);
    }
};
