#pragma once

#include "engine/support/RawValue.hpp"

#include <array>

namespace brevant {

// The applications whose catalogs Brevant reads and marks in. The order is
// that of CatalogReference::Record and of CatalogRegistry.
enum class CatalogApplication {
    lightroom,
    captureOne,
    digikam,
    darktable,
    shotwell,
};

template <> struct EnumCases<CatalogApplication> {
    static constexpr std::array kAll{CatalogApplication::lightroom, CatalogApplication::captureOne,
                                     CatalogApplication::digikam, CatalogApplication::darktable,
                                     CatalogApplication::shotwell};
};

} // namespace brevant
