#pragma once

#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace brevant {

// Why a tagging or an undo of a Capture One catalog was refused as a
// whole. A refused operation leaves the catalog as it was.
struct CaptureOneRefusal {
    enum class Kind {
        // `detail`: the catalog's version.
        untestedVersion,
        // `detail`: why the backup failed.
        backupFailed,
        // `detail`: why the catalog could not be read or changed.
        writeFailed,
        approvalDoesNotMatch,
        notCaptureOnePhotos,
        captureOneOpen,
        // The catalog was changed, but its record could not be saved (so
        // the backup is the way back). `detail`: why.
        recordNotSaved,
    };

    Kind kind = Kind::approvalDoesNotMatch;
    std::string detail;

    [[nodiscard]] static CaptureOneRefusal untestedVersion(std::string version) {
        return {Kind::untestedVersion, std::move(version)};
    }

    [[nodiscard]] static CaptureOneRefusal backupFailed(std::string reason) {
        return {Kind::backupFailed, std::move(reason)};
    }

    [[nodiscard]] static CaptureOneRefusal writeFailed(std::string reason) {
        return {Kind::writeFailed, std::move(reason)};
    }

    [[nodiscard]] static CaptureOneRefusal approvalDoesNotMatch() {
        return {Kind::approvalDoesNotMatch, {}};
    }

    [[nodiscard]] static CaptureOneRefusal notCaptureOnePhotos() {
        return {Kind::notCaptureOnePhotos, {}};
    }

    [[nodiscard]] static CaptureOneRefusal recordNotSaved(std::string reason) {
        return {Kind::recordNotSaved, std::move(reason)};
    }

    [[nodiscard]] static CaptureOneRefusal captureOneOpen() { return {Kind::captureOneOpen, {}}; }

    // The sentence shown to the user.
    [[nodiscard]] std::string text() const;

    friend bool operator==(const CaptureOneRefusal&, const CaptureOneRefusal&) = default;
};

template <> struct EnumCases<CaptureOneRefusal::Kind> {
    using Kind = CaptureOneRefusal::Kind;
    static constexpr std::array kAll{Kind::untestedVersion,     Kind::backupFailed,
                                     Kind::writeFailed,         Kind::approvalDoesNotMatch,
                                     Kind::notCaptureOnePhotos, Kind::captureOneOpen,
                                     Kind::recordNotSaved};
};

[[nodiscard]] std::string_view rawValue(CaptureOneRefusal::Kind kind);
void PrintTo(CaptureOneRefusal::Kind kind, std::ostream* os);
void PrintTo(const CaptureOneRefusal& refusal, std::ostream* os);

} // namespace brevant
