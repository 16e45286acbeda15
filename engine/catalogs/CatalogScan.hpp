#pragma once

#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ExactMatcher.hpp"
#include "engine/scan/ScanResult.hpp"

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace brevant {

// The part that the scans of every kind of catalog share: the exact
// matcher over the catalog's folders, admitting only the photos the catalog
// offers, then each picture given what the catalog knows of it.
struct CatalogScan {
    using Paths = std::unordered_set<std::string>;
    // Sets the catalog's reference on a picture whose path is usable.
    using Annotate = std::function<void(PhotoAsset&)>;

    // Only roots that hold a usable photo are walked (a root whose photos
    // are all missing or excluded holds nothing to compare, and a root of
    // another computer would only be refused), and a root inside another is
    // walked once, as part of the outer one.
    [[nodiscard]] static std::vector<std::string> rootsToWalk(const std::vector<std::string>& roots,
                                                              const Paths& usable);

    [[nodiscard]] static ScanResult run(const std::vector<std::string>& roots, Paths usable,
                                        bool keepPictures, const CancellationFlag& cancel,
                                        const ExactMatcher::Progress& progress,
                                        const Annotate& annotate);

    // Adds a photo the catalog lists but whose file is not there.
    static void addMissing(ScanResult& result, const std::string& path,
                           const std::string& sentence);

    // The scan of one catalog: its usable photos (as `Scanner::isUsable`
    // tells) compared, each picture given the reference of the first usable
    // photo on its file in catalog order; the missing photos skipped with
    // `Scanner::missingSentence`.
    template <class Scanner, class Catalog>
    [[nodiscard]] static ScanResult photos(const Catalog& catalog, bool keepPictures,
                                           const CancellationFlag& cancel,
                                           const ExactMatcher::Progress& progress) {
        std::unordered_map<std::string, CatalogReference> refs;
        Paths usable;
        for (const auto& photo : catalog.photos) {
            if (Scanner::isUsable(photo)) {
                refs.try_emplace(photo.path, CatalogReference{photo.ref});
                usable.insert(photo.path);
            }
        }
        auto annotate = [&refs](PhotoAsset& picture) {
            if (auto it = refs.find(picture.path); it != refs.end()) {
                picture.catalog = it->second;
            }
        };
        ScanResult result =
            run(catalog.rootFolders, std::move(usable), keepPictures, cancel, progress, annotate);
        for (const auto& photo : catalog.missing()) {
            addMissing(result, photo.path, Scanner::missingSentence());
        }
        return result;
    }
};

} // namespace brevant
