#include "CatalogRegistry.hpp"

#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/CaptureOneScanner.hpp"
#include "engine/catalogs/DarktableMarker.hpp"
#include "engine/catalogs/DarktableScanner.hpp"
#include "engine/catalogs/DigikamMarker.hpp"
#include "engine/catalogs/DigikamScanner.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"
#include "engine/catalogs/LightroomScanner.hpp"
#include "engine/catalogs/ShotwellMarker.hpp"
#include "engine/catalogs/ShotwellScanner.hpp"

#include <algorithm>
#include <array>

namespace brevant {

namespace {

// Every kind is read, checked and scanned the same way; only its types
// differ.
template <class Catalog, class Scanner>
std::expected<CatalogSource::Scanned, std::string>
scanned(CatalogSource::Application application, const std::string& path, bool keepPictures,
        const CancellationFlag& cancel, const ExactMatcher::Progress& progress) {
    auto catalog = Catalog::read(path);
    if (!catalog) {
        return std::unexpected(catalog.error().text());
    }
    CatalogSource::Scanned result{
        .facts = {.application = application, .photos = catalog->photos.size()}};
    if (!catalog->isTestedVersion()) {
        result.facts.untested =
            CatalogRefusal::untestedVersion(application, catalog->schemaVersion).text();
        result.facts.untestedVersion = catalog->schemaVersion;
    }
    for (const auto& photo : catalog->missing()) {
        result.facts.missing.push_back(photo.path);
    }
    // Only a library that spans drives can list photos on one not connected.
    if constexpr (requires { catalog->notConnected(); }) {
        for (const auto& photo : catalog->notConnected()) {
            result.facts.notConnected.push_back(photo.path);
        }
    }
    result.facts.alreadyMarked = Scanner::alreadyMarked(*catalog);
    result.result = Scanner::scan(*catalog, keepPictures, cancel, progress);
    return result;
}

template <class Marker>
std::unique_ptr<CatalogKind> made(std::string recordDirectory, const CatalogKind::IsOpen& isOpen) {
    return std::make_unique<CatalogKindOf<Marker>>(std::move(recordDirectory), isOpen);
}

// One entry a kind: its marker (with its texts and hooks), its scanner,
// how its catalog is named and where the application keeps it.
template <class Marker, class Scanner>
constexpr CatalogRegistration registered(std::string_view fileName,
                                         std::string_view defaultFolder) {
    using Marking = typename Marker::Marking;
    return {.application = Marking::kApplication,
            .texts = &Marker::kTexts,
            .fileName = fileName,
            .defaultFolder = defaultFolder,
            .scan = &scanned<typename Marking::Catalog, Scanner>,
            .choose = &Marking::Catalog::choose,
            .make = &made<Marker>,
            .recordFolder = Marking::kRecordFolder};
}

constexpr std::array kRegistrations{
    registered<LightroomRejecter, LightroomScanner>(".lrcat", "/Pictures/Lightroom"),
    registered<CaptureOneMarker, CaptureOneScanner>(".cocatalog", "/Pictures"),
    registered<DigikamMarker, DigikamScanner>("digikam4.db", "/Pictures"),
    registered<DarktableMarker, DarktableScanner>("library.db", "/.config/darktable"),
    registered<ShotwellMarker, ShotwellScanner>(ShotwellCatalog::kFileName,
                                                ShotwellCatalog::kDefaultFolder),
};

} // namespace

std::span<const CatalogRegistration> catalogRegistrations() {
    return kRegistrations;
}

const CatalogRegistration& catalogRegistration(CatalogSource::Application application) {
    const auto* found =
        std::ranges::find(kRegistrations, application, &CatalogRegistration::application);
    return found != kRegistrations.end() ? *found : kRegistrations.front();
}

} // namespace brevant
