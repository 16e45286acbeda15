#pragma once

#include "engine/catalogs/ShotwellCatalog.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanResult.hpp"

#include <string>
#include <vector>

namespace brevant {

// Looks for identical copies among the photos a Shotwell library lists,
// and only those.
struct ShotwellScanner {
    // Usable photos are those whose file exists, that are not in Shotwell's
    // Trash and that do not carry the marking's tag already. Every picture
    // the exact matcher returns carries its Shotwell reference; missing
    // photos become skipped files.
    [[nodiscard]] static ScanResult scan(const ShotwellCatalog& catalog, bool keepPictures,
                                         const CancellationFlag& cancel,
                                         const ExactMatcher::Progress& progress);

    [[nodiscard]] static bool isUsable(const ShotwellPhoto& photo);
    // The paths of the photos outside the Trash that carry the marking's tag.
    [[nodiscard]] static std::vector<std::string> alreadyMarked(const ShotwellCatalog& catalog);

    [[nodiscard]] static const std::string& missingSentence();
};

} // namespace brevant
