#include "CatalogSource.hpp"

#include "engine/catalogs/CaptureOneCatalog.hpp"
#include "engine/catalogs/CaptureOneScanner.hpp"
#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogRefusal.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"
#include "engine/catalogs/LightroomScanner.hpp"
#include "engine/catalogs/ShotwellCatalog.hpp"
#include "engine/catalogs/ShotwellScanner.hpp"
#include "engine/platform/ProcessInfo.hpp"

#include <algorithm>
#include <array>
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

using Scan = std::expected<CatalogSource::Scanned, std::string> (*)(CatalogSource::Application,
                                                                    const std::string&, bool,
                                                                    const CancellationFlag&,
                                                                    const ExactMatcher::Progress&);

// What tells the kinds apart where a catalog is found, chosen and scanned;
// one entry a kind, in the order of the Application enumeration.
struct KindEntry {
    CatalogSource::Application application;
    // Lowercased: the catalog's extension (".lrcat"), or the database's
    // whole file name where the application fixes it ("digikam4.db").
    std::string_view fileName;
    Scan scan;
    CatalogChoice (*choose)(const std::string& folder);
    // Where the application keeps its catalogs, under the home folder.
    std::string_view defaultFolder;
};

constexpr std::array kKinds{
    KindEntry{CatalogSource::Application::lightroom, ".lrcat",
              &scanned<LightroomCatalog, LightroomScanner>, &LightroomCatalog::choose,
              "/Pictures/Lightroom"},
    KindEntry{CatalogSource::Application::captureOne, ".cocatalog",
              &scanned<CaptureOneCatalog, CaptureOneScanner>, &CaptureOneCatalog::choose,
              "/Pictures"},
    KindEntry{CatalogSource::Application::shotwell, ShotwellCatalog::kFileName,
              &scanned<ShotwellCatalog, ShotwellScanner>, &ShotwellCatalog::choose,
              ShotwellCatalog::kDefaultFolder},
};

const KindEntry& entryOf(CatalogSource::Application application) {
    return kKinds.at(static_cast<std::size_t>(application));
}

} // namespace

std::optional<CatalogSource::Application> CatalogSource::applicationOf(const std::string& path) {
    std::string name = path;
    while (name.size() > 1 && name.ends_with('/')) {
        name.pop_back();
    }
    std::filesystem::path file(name);
    auto lowered = [](std::string text) {
        std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
        return text;
    };
    std::string extension = lowered(file.extension().string());
    std::string whole = lowered(file.filename().string());
    auto found = std::ranges::find_if(kKinds, [&](const KindEntry& kind) {
        return kind.fileName.starts_with('.') ? kind.fileName == extension : kind.fileName == whole;
    });
    if (found == kKinds.end()) {
        return std::nullopt;
    }
    return found->application;
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
    return entryOf(*application).scan(*application, path, keepPictures, cancel, progress);
}

std::string CatalogSource::defaultFolder(Application application) {
    return platform::homeFolder() + std::string(entryOf(application).defaultFolder);
}

CatalogChoice CatalogSource::choose(Application application, const std::string& folder) {
    return entryOf(application).choose(folder);
}

void PrintTo(CatalogSource::Application application, std::ostream* os) {
    *os << CatalogSource::name(application);
}

} // namespace brevant
