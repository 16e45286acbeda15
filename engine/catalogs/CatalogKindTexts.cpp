#include "CatalogKindTexts.hpp"

#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"
#include "engine/catalogs/ShotwellMarker.hpp"

#include <fmt/format.h>

namespace brevant {

const CatalogKindTexts& CatalogKindTexts::of(CatalogSource::Application application) {
    switch (application) {
    case CatalogSource::Application::lightroom:
        return LightroomRejecter::kTexts;
    case CatalogSource::Application::captureOne:
        return CaptureOneMarker::kTexts;
    case CatalogSource::Application::shotwell:
        return ShotwellMarker::kTexts;
    }
    return LightroomRejecter::kTexts;
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

} // namespace brevant
