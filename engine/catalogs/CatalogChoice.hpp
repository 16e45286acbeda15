#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Which catalog of a folder is used: the most recently changed one, with a
// notice for the user when there was none or more than one to choose from.
struct CatalogChoice {
    std::optional<std::string> catalog;
    std::optional<std::string> notice;

    // The entries of `folder` whose extension, lowercased, is `extension`,
    // newest first by modification date (an entry without one sorts as the
    // distant past), then by name. Lightroom catalogs are files and Capture
    // One catalogs are folders: `wantFolders` says which kind is meant;
    // symbolic links are never listed.
    [[nodiscard]] static std::vector<std::string>
    catalogsIn(const std::string& folder, std::string_view extension, bool wantFolders);

    // Chooses among `catalogs` (newest first) found in `folder`. `noneSentence`
    // is the whole notice for a folder without any.
    [[nodiscard]] static CatalogChoice choose(const std::vector<std::string>& catalogs,
                                              std::string noneSentence);

    // "This folder holds 3 catalogs; using Family.lrcat, the most recently
    // changed."
    [[nodiscard]] static std::string severalSentence(std::size_t count, std::string_view name);

    friend bool operator==(const CatalogChoice&, const CatalogChoice&) = default;
};

} // namespace brevant
