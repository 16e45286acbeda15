#pragma once

#include "engine/catalogs/CatalogKind.hpp"
#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogSource.hpp"

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace brevant {

// Everything that tells one kind of catalog apart where catalogs are found,
// chosen, scanned, named and marked. A kind is added by its own files, its
// application's case, its reference in CatalogReference and one entry here.
struct CatalogRegistration {
    using Scan = std::expected<CatalogSource::Scanned, std::string> (*)(
        CatalogSource::Application, const std::string&, bool, const CancellationFlag&,
        const ExactMatcher::Progress&);
    using Make = std::unique_ptr<CatalogKind> (*)(std::string recordDirectory,
                                                  const CatalogKind::IsOpen& isOpen);

    CatalogSource::Application application;
    const CatalogKindTexts* texts;
    // Lowercased: the catalog's extension (".lrcat"), or the database's
    // whole file name where the application fixes it ("digikam4.db").
    std::string_view fileName;
    // Where the application keeps its catalogs, under the home folder.
    std::string_view defaultFolder;
    Scan scan;
    CatalogChoice (*choose)(const std::string& folder);
    // The kind's markings, history and undo over its record folder.
    Make make;
    // Its records' folder in the data folder's markings.
    std::string_view recordFolder;
};

// In the order of the Application enumeration.
[[nodiscard]] std::span<const CatalogRegistration> catalogRegistrations();

[[nodiscard]] const CatalogRegistration&
catalogRegistration(CatalogSource::Application application);

} // namespace brevant
