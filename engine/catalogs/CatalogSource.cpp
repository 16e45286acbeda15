#include "CatalogSource.hpp"

#include "engine/catalogs/CaptureOneCatalog.hpp"
#include "engine/catalogs/CaptureOneRefusal.hpp"
#include "engine/catalogs/CaptureOneScanner.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/catalogs/LightroomRefusal.hpp"
#include "engine/catalogs/LightroomScanner.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <ostream>

namespace brevant {

namespace {

// Both catalogs are read, checked and scanned the same way; only their
// types differ.
template <class Catalog, class Refusal, class Scanner>
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
        result.facts.untested = Refusal::untestedVersion(catalog->schemaVersion).text();
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
    switch (application) {
    case Application::lightroom:
        return "Lightroom Classic";
    case Application::captureOne:
        return "Capture One";
    }
    return "Lightroom Classic";
}

std::string_view CatalogSource::alreadyMarkedHeading(Application application) {
    switch (application) {
    case Application::lightroom:
        return "Already Rejected in Lightroom Classic";
    case Application::captureOne:
        return "Already tagged Red in Capture One";
    }
    return "Already Rejected in Lightroom Classic";
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
        return scanned<LightroomCatalog, LightroomRefusal, LightroomScanner>(
            *application, path, keepPictures, cancel, progress);
    case Application::captureOne:
        return scanned<CaptureOneCatalog, CaptureOneRefusal, CaptureOneScanner>(
            *application, path, keepPictures, cancel, progress);
    }
    return std::unexpected(std::string(kNotACatalog));
}

void PrintTo(CatalogSource::Application application, std::ostream* os) {
    *os << CatalogSource::name(application);
}

} // namespace brevant
