#pragma once

#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>

namespace brevant {

// Why a copy may not be marked for removal, as the user is told.
struct MarkRefusal {
    enum class Kind {
        protectedFolder,
        fixed,
        locked,
        lastCopy,
        notFound,
    };

    Kind kind = Kind::notFound;
    // The protected folder (protectedFolder) or the reason the copy must be
    // kept (fixed); empty for the others.
    std::string detail;

    [[nodiscard]] static MarkRefusal protectedFolder(std::string root);
    [[nodiscard]] static MarkRefusal fixed(std::string reason);
    [[nodiscard]] static MarkRefusal locked();
    [[nodiscard]] static MarkRefusal lastCopy();
    [[nodiscard]] static MarkRefusal notFound();

    // The complete sentence shown to the user.
    [[nodiscard]] std::string message() const;

    friend bool operator==(const MarkRefusal&, const MarkRefusal&) = default;
};

template <> struct EnumCases<MarkRefusal::Kind> {
    using Kind = MarkRefusal::Kind;
    static constexpr std::array kAll{Kind::protectedFolder, Kind::fixed, Kind::locked,
                                     Kind::lastCopy, Kind::notFound};
};

[[nodiscard]] std::string_view rawValue(MarkRefusal::Kind kind);
void PrintTo(MarkRefusal::Kind kind, std::ostream* os);
void PrintTo(const MarkRefusal& refusal, std::ostream* os);

} // namespace brevant
