#include "CatalogSource.hpp"

#include "engine/catalogs/CaptureOneCatalog.hpp"
#include "engine/catalogs/CaptureOneScanner.hpp"
#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogRefusal.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/catalogs/LightroomScanner.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <ostream>

namespace brevant {

namespace {

// Both catalogs are read, checked and scanned the same way; only their
// types differ.
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
    result.facts.alreadyMarked = Scanner::alreadyMarked(*catalog);
    result.result = Scanner::scan(*catalog, keepPictures, cancel, progress);
    return result;
}

} // namespace

std::optional<CatalogSource::Application> CatalogSource::applicationOf(const std::string& path) {
    std::string name = path;
    while (name.size() > 1 && name.ends_with('/')) {
        name.pop_back();
    }
    name = std::filesystem::path(name).extension().string();
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
    if (name == ".lrcat") {
        return Application::lightroom;
    }
    if (name == ".cocatalog") {
        return Application::captureOne;
    }
    return std::nullopt;
}

std::string_view CatalogSource::name(Application application) {
    return CatalogKindTexts::of(application).name;
}

std::string_view CatalogSource::alreadyMarkedHeading(Application application) {
    return CatalogKindTexts::of(application).alreadyMarkedHeading;
}

std::expected<CatalogSource::Scanned, std::string>
CatalogSource::scan(const std::string& path, bool keepPictures, const CancellationFlag& cancel,
                    const ExactMatcher::Progress& progress) {
    auto application = applicationOf(path);
    if (!application) {
        return std::unexpected(std::string(kNotACatalog));
    }
    switch (*application) {
    case Application::lightroom:
        return scanned<LightroomCatalog, LightroomScanner>(*application, path, keepPictures, cancel,
                                                           progress);
    case Application::captureOne:
        return scanned<CaptureOneCatalog, CaptureOneScanner>(*application, path, keepPictures,
                                                             cancel, progress);
    }
    return std::unexpected(std::string(kNotACatalog));
}

void PrintTo(CatalogSource::Application application, std::ostream* os) {
    *os << CatalogSource::name(application);
}

} // namespace brevant
