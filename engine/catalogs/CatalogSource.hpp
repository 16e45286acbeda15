#pragma once

#include "engine/catalogs/CatalogChoice.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/CatalogApplication.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanResult.hpp"
#include "engine/support/RawValue.hpp"

#include <cstddef>
#include <expected>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// A photo catalog as the source of a scan: which application keeps it, told
// by its name alone, and its files compared among themselves. The catalog of
// one more application is one more case here; the scan road above and the
// programs stay as they are.
struct CatalogSource {
    using Application = CatalogApplication;

    // What a scan learned of the catalog besides its pictures.
    struct Facts {
        Application application = Application::lightroom;
        // The photos the catalog lists.
        std::size_t photos = 0;
        // Why marking would refuse the catalog: its version is one marking
        // was not tested with. Reading and scanning it are fine.
        std::optional<std::string> untested;
        // That version, as the catalog gives it.
        std::optional<std::string> untestedVersion;
        // The photos listed whose files are not where the catalog says, and
        // those its application already has on their way out (Rejected in
        // Lightroom Classic, tagged Red in Capture One), in catalog order.
        std::vector<std::string> missing;
        std::vector<std::string> alreadyMarked;
        // The photos listed on a drive that is not connected now.
        std::vector<std::string> notConnected;

        friend bool operator==(const Facts&, const Facts&) = default;
    };

    struct Scanned {
        Facts facts;
        ScanResult result;
    };

    // "That is not a Lightroom Classic catalog (.lrcat) or a Capture One
    // catalog (.cocatalog).", naming every kind.
    [[nodiscard]] static std::string notACatalog();

    // By the name's extension, lowercased; trailing slashes do not count (a
    // Capture One catalog is a folder).
    [[nodiscard]] static std::optional<Application> applicationOf(const std::string& path);

    // "Lightroom Classic" or "Capture One".
    [[nodiscard]] static std::string_view name(Application application);
    // What the photos of `alreadyMarked` are, as a heading: "Already Rejected
    // in Lightroom Classic", "Already tagged Red in Capture One".
    [[nodiscard]] static std::string_view alreadyMarkedHeading(Application application);

    // Where the application keeps its catalogs unless the user says.
    [[nodiscard]] static std::string defaultFolder(Application application);
    // The catalog of this kind in the folder, with a notice when there was
    // none or more than one.
    [[nodiscard]] static CatalogChoice choose(Application application, const std::string& folder);

    // The catalog a command names: `given` as the user wrote it, `path` the
    // same made absolute. A catalog is taken as it is; a folder holding one
    // gives the catalog chosen there; an application's name ("digikam",
    // without regard to case) where no such file is, gives its catalog at its
    // usual place. Anything else comes back as it is, for the scan to
    // explain; the sentence why when no catalog is found where one was meant.
    [[nodiscard]] static std::expected<CatalogChoice, std::string> locate(std::string_view given,
                                                                          const std::string& path);

    // Reads the catalog and scans the files it lists; the sentence why when
    // it is no catalog or cannot be read. Nothing is ever written to it.
    [[nodiscard]] static std::expected<Scanned, std::string>
    scan(const std::string& path, bool keepPictures, const CancellationFlag& cancel,
         const ExactMatcher::Progress& progress);
};

void PrintTo(CatalogSource::Application application, std::ostream* os);

} // namespace brevant
