#pragma once

#include "engine/support/RawValue.hpp"

#include <array>

namespace brevant {

// The applications whose catalogs Brevant reads and marks in. The order is
// that of CatalogReference::Record and of the registration in CatalogKinds.
enum class CatalogApplication {
    lightroom,
    captureOne,
    shotwell,
};

template <> struct EnumCases<CatalogApplication> {
    static constexpr std::array kAll{CatalogApplication::lightroom, CatalogApplication::captureOne,
                                     CatalogApplication::shotwell};
};

} // namespace brevant
