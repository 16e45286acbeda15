#pragma once

#include "engine/catalogs/SQLiteWriter.hpp"

#include <expected>
#include <functional>
#include <optional>
#include <string>

namespace brevant {

// One change of a catalog: "BEGIN IMMEDIATE", the changes, "COMMIT"; a
// failure anywhere runs "ROLLBACK" (whose own failure is ignored) and is
// passed on, so the catalog is either wholly changed or as it was.
struct CatalogTransaction {
    using Failure = SQLiteWriter::Failure;
    using Changes = std::function<std::expected<void, Failure>(const SQLiteWriter&)>;

    // A database file kept in two, where one change must reach both: the
    // second is attached under `name` before the transaction begins.
    struct Database {
        struct Attached {
            std::string path;
            std::string name;
        };

        std::string path;
        std::optional<Attached> attached;
    };

    [[nodiscard]] static std::expected<void, Failure> run(const std::string& database,
                                                          const Changes& changes);
    [[nodiscard]] static std::expected<void, Failure> run(const Database& database,
                                                          const Changes& changes);

    // Runs an update that must change exactly one row; any other count fails
    // with `failure`.
    [[nodiscard]] static std::expected<void, Failure>
    updateOne(const SQLiteWriter& writer, const std::string& sql, const std::string& failure);
};

} // namespace brevant
