#pragma once

#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace brevant {

// Why a marking or an undo of a Lightroom Classic catalog was refused as a
// whole. A refused operation leaves the catalog as it was.
struct LightroomRefusal {
    enum class Kind {
        // `detail`: the catalog's version.
        untestedVersion,
        // `detail`: why the backup failed.
        backupFailed,
        // `detail`: why the catalog could not be read or changed.
        writeFailed,
        approvalDoesNotMatch,
        notLightroomPhotos,
        lightroomOpen,
        // The catalog was changed, but its record could not be saved (so
        // the backup is the way back). `detail`: why.
        recordNotSaved,
    };

    Kind kind = Kind::approvalDoesNotMatch;
    std::string detail;

    [[nodiscard]] static LightroomRefusal untestedVersion(std::string version) {
        return {Kind::untestedVersion, std::move(version)};
    }

    [[nodiscard]] static LightroomRefusal backupFailed(std::string reason) {
        return {Kind::backupFailed, std::move(reason)};
    }

    [[nodiscard]] static LightroomRefusal writeFailed(std::string reason) {
        return {Kind::writeFailed, std::move(reason)};
    }

    [[nodiscard]] static LightroomRefusal approvalDoesNotMatch() {
        return {Kind::approvalDoesNotMatch, {}};
    }

    [[nodiscard]] static LightroomRefusal notLightroomPhotos() {
        return {Kind::notLightroomPhotos, {}};
    }

    [[nodiscard]] static LightroomRefusal recordNotSaved(std::string reason) {
        return {Kind::recordNotSaved, std::move(reason)};
    }

    [[nodiscard]] static LightroomRefusal lightroomOpen() { return {Kind::lightroomOpen, {}}; }

    // The sentence shown to the user.
    [[nodiscard]] std::string text() const;

    friend bool operator==(const LightroomRefusal&, const LightroomRefusal&) = default;
};

template <> struct EnumCases<LightroomRefusal::Kind> {
    using Kind = LightroomRefusal::Kind;
    static constexpr std::array kAll{Kind::untestedVersion,    Kind::backupFailed,
                                     Kind::writeFailed,        Kind::approvalDoesNotMatch,
                                     Kind::notLightroomPhotos, Kind::lightroomOpen,
                                     Kind::recordNotSaved};
};

[[nodiscard]] std::string_view rawValue(LightroomRefusal::Kind kind);
void PrintTo(LightroomRefusal::Kind kind, std::ostream* os);
void PrintTo(const LightroomRefusal& refusal, std::ostream* os);

} // namespace brevant
