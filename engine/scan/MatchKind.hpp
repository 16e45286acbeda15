#pragma once

#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string_view>

namespace brevant {

enum class MatchKind {
    identical,
    similar,
    series,
    liveMovie,
};

template <> struct EnumCases<MatchKind> {
    static constexpr std::array kAll{MatchKind::identical, MatchKind::similar, MatchKind::series,
                                     MatchKind::liveMovie};
};

[[nodiscard]] std::string_view rawValue(MatchKind kind);
void PrintTo(MatchKind kind, std::ostream* os);

} // namespace brevant
