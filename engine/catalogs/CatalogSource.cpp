#include "CatalogSource.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/catalogs/CatalogRegistry.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/scan/PathRules.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <ostream>

namespace brevant {

std::optional<CatalogSource::Application> CatalogSource::applicationOf(const std::string& path) {
    std::string name = path;
    while (name.size() > 1 && name.ends_with('/')) {
        name.pop_back();
    }
    std::string whole = PathRules::asciiLowercased(PathRules::lastComponent(name));
    std::string extension = "." + std::string(PathRules::extension(whole));
    auto kinds = catalogRegistrations();
    auto found = std::ranges::find_if(kinds, [&](const CatalogRegistration& kind) {
        return kind.fileName.starts_with('.') ? kind.fileName == extension : kind.fileName == whole;
    });
    if (found == kinds.end()) {
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
        return std::unexpected(notACatalog());
    }
    return catalogRegistration(*application)
        .scan(*application, path, keepPictures, cancel, progress);
}

std::string CatalogSource::notACatalog() {
    auto kinds = catalogRegistrations();
    std::string text = "That is not ";
    for (std::size_t index = 0; index < kinds.size(); ++index) {
        if (index > 0) {
            text += index + 1 == kinds.size() ? " or " : ", ";
        }
        text += kinds[index].texts->describedAs;
    }
    return text + ".";
}

std::string CatalogSource::defaultFolder(Application application) {
    return platform::homeFolder() + std::string(catalogRegistration(application).defaultFolder);
}

CatalogChoice CatalogSource::choose(Application application, const std::string& folder) {
    return catalogRegistration(application).choose(folder);
}

std::expected<CatalogChoice, std::string> CatalogSource::locate(std::string_view given,
                                                                const std::string& path) {
    auto found = [](CatalogChoice choice) -> std::expected<CatalogChoice, std::string> {
        if (!choice.catalog) {
            return std::unexpected(choice.notice.value_or(notACatalog()));
        }
        return choice;
    };
    std::error_code error;
    auto type = std::filesystem::status(path, error).type();
    if (type == std::filesystem::file_type::directory && !applicationOf(path)) {
        for (const auto& kind : catalogRegistrations()) {
            auto choice = kind.choose(path);
            if (choice.catalog) {
                return choice;
            }
        }
        return std::unexpected(notACatalog());
    }
    if (type == std::filesystem::file_type::not_found && !given.contains('/')) {
        std::string name = PathRules::asciiLowercased(given);
        for (const auto& kind : catalogRegistrations()) {
            if (PathRules::asciiLowercased(kind.texts->settingsKey) == name) {
                return found(kind.choose(defaultFolder(kind.application)));
            }
        }
    }
    return CatalogChoice{.catalog = path};
}

void PrintTo(CatalogSource::Application application, std::ostream* os) {
    *os << CatalogSource::name(application);
}

} // namespace brevant
