#pragma once

#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string_view>

namespace brevant {

// Why a copy belongs with other files beside it and is kept.
enum class Relationship {
    sidecar,
    livePhoto,
    rawPair,
    editedOriginal,
};

template <> struct EnumCases<Relationship> {
    static constexpr std::array kAll{Relationship::sidecar, Relationship::livePhoto,
                                     Relationship::rawPair, Relationship::editedOriginal};
};

[[nodiscard]] std::string_view rawValue(Relationship relationship);
// The sentence shown as why the copy is kept.
[[nodiscard]] std::string_view reason(Relationship relationship);
void PrintTo(Relationship relationship, std::ostream* os);

} // namespace brevant
