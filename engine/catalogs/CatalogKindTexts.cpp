#include "CatalogKindTexts.hpp"

#include "engine/catalogs/CatalogRegistry.hpp"

#include <fmt/format.h>

namespace brevant {

const CatalogKindTexts& CatalogKindTexts::of(CatalogSource::Application application) {
    return *catalogRegistration(application).texts;
}

std::string CatalogKindTexts::questionText(std::string_view photos) const {
    return fmt::format(fmt::runtime(question), photos);
}

std::string CatalogKindTexts::markedText(std::string_view photos) const {
    return fmt::format(fmt::runtime(marked), photos);
}

std::string CatalogKindTexts::doneText(std::string_view photos) const {
    return fmt::format(fmt::runtime(done), photos);
}

std::string CatalogKindTexts::untestedText(std::string_view version) const {
    return fmt::format(fmt::runtime(untestedNotice), version);
}

std::string CatalogKindTexts::busyText() const {
    return fmt::format("{} is busy with it. Try again in a moment.", name);
}

std::string CatalogKindTexts::notACatalogText() const {
    return fmt::format("That is not {}.", describedAs);
}

std::string CatalogKindTexts::noCatalogText(std::string_view folder) const {
    // "a Shotwell library (photo.db)" without its article.
    auto kind = describedAs.substr(describedAs.find(' ') + 1);
    return fmt::format("There is no {} in {}. {}", kind, folder, chooseFolder);
}

} // namespace brevant
