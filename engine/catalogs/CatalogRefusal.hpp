#pragma once

#include "engine/catalogs/CatalogSource.hpp"
#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace brevant {

// Why a marking or an undo of a catalog was refused as a whole. A refused
// operation leaves the catalog as it was. The catalog's application picks
// the sentences that name it.
struct CatalogRefusal {
    using Application = CatalogSource::Application;

    enum class Kind {
        // `detail`: the catalog's version.
        untestedVersion,
        // `detail`: why the backup failed.
        backupFailed,
        // `detail`: why the catalog could not be read or changed.
        writeFailed,
        approvalDoesNotMatch,
        // A planned photo is not from a catalog of this application.
        notCatalogPhotos,
        applicationOpen,
        // The catalog was changed, but its record could not be saved (so
        // the backup is the way back). `detail`: why.
        recordNotSaved,
        // Another run holds the data folder's change lock. `detail`: the
        // sentence saying who.
        changesBusy,
    };

    Application application = Application::lightroom;
    Kind kind = Kind::approvalDoesNotMatch;
    std::string detail;

    [[nodiscard]] static CatalogRefusal untestedVersion(Application application,
                                                        std::string version) {
        return {application, Kind::untestedVersion, std::move(version)};
    }

    [[nodiscard]] static CatalogRefusal backupFailed(Application application, std::string reason) {
        return {application, Kind::backupFailed, std::move(reason)};
    }

    [[nodiscard]] static CatalogRefusal writeFailed(Application application, std::string reason) {
        return {application, Kind::writeFailed, std::move(reason)};
    }

    [[nodiscard]] static CatalogRefusal approvalDoesNotMatch(Application application) {
        return {application, Kind::approvalDoesNotMatch, {}};
    }

    [[nodiscard]] static CatalogRefusal notCatalogPhotos(Application application) {
        return {application, Kind::notCatalogPhotos, {}};
    }

    [[nodiscard]] static CatalogRefusal recordNotSaved(Application application,
                                                       std::string reason) {
        return {application, Kind::recordNotSaved, std::move(reason)};
    }

    [[nodiscard]] static CatalogRefusal applicationOpen(Application application) {
        return {application, Kind::applicationOpen, {}};
    }

    [[nodiscard]] static CatalogRefusal changesBusy(Application application, std::string sentence) {
        return {application, Kind::changesBusy, std::move(sentence)};
    }

    // The sentence shown to the user.
    [[nodiscard]] std::string text() const;

    friend bool operator==(const CatalogRefusal&, const CatalogRefusal&) = default;
};

template <> struct EnumCases<CatalogRefusal::Kind> {
    using Kind = CatalogRefusal::Kind;
    static constexpr std::array kAll{Kind::untestedVersion,  Kind::backupFailed,
                                     Kind::writeFailed,      Kind::approvalDoesNotMatch,
                                     Kind::notCatalogPhotos, Kind::applicationOpen,
                                     Kind::recordNotSaved,   Kind::changesBusy};
};

[[nodiscard]] std::string_view rawValue(CatalogRefusal::Kind kind);
void PrintTo(CatalogRefusal::Kind kind, std::ostream* os);
void PrintTo(const CatalogRefusal& refusal, std::ostream* os);

} // namespace brevant
