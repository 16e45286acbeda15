#pragma once

#include "engine/catalogs/CatalogBackup.hpp"
#include "engine/catalogs/CatalogReadError.hpp"
#include "engine/catalogs/SQLiteWriter.hpp"
#include "engine/catalogs/TagMarkRecord.hpp"
#include "engine/scan/CatalogApplication.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/Date.hpp"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>

namespace brevant {

// What marking in the photo libraries has in common: the tag record, the
// catalog's own reading and open check, and a library kept in one database
// file. A kind declares the rest, and hides any of these it does otherwise.
template <class LibraryCatalog, class LibraryPhoto, CatalogApplication application>
struct LibraryMarking {
    // A planned photo that passed its re-check.
    struct Chosen {
        std::int64_t imageID = 0;
        std::string path;
    };

    using Catalog = LibraryCatalog;
    using Photo = LibraryPhoto;
    using Record = TagMarkRecord;
    using Item = TagMarkItem;
    using Failure = SQLiteWriter::Failure;

    static constexpr CatalogApplication kApplication = application;

    [[nodiscard]] static std::int64_t photoID(const Photo& photo) { return photo.ref.imageID; }

    [[nodiscard]] static bool isOpen(const std::string& catalog) {
        return Catalog::isOpen(catalog);
    }

    [[nodiscard]] static std::expected<Catalog, CatalogReadError> read(const std::string& catalog) {
        return Catalog::read(catalog);
    }

    [[nodiscard]] static Chosen choose(const Photo& photo) {
        return {photo.ref.imageID, photo.path};
    }

    // "Brevant Backups/<name> <date>.db" beside the database.
    [[nodiscard]] static std::expected<std::string, Failure>
    backUp(const std::string& catalog, const Catalog& /*fresh*/, Date now) {
        return CatalogBackup::backUpFile(catalog, "db", now);
    }

    [[nodiscard]] static std::string database(const std::string& catalog,
                                              const Catalog& /*fresh*/) {
        return catalog;
    }

    // The database, while its file is still there.
    [[nodiscard]] static std::optional<std::string> undoDatabase(const std::string& catalog) {
        if (!FileSnapshot::read(catalog)) {
            return std::nullopt;
        }
        return catalog;
    }
};

} // namespace brevant
