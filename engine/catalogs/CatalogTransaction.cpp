#include "CatalogTransaction.hpp"

namespace brevant {

std::expected<void, CatalogTransaction::Failure>
CatalogTransaction::run(const std::string& database, const Changes& changes) {
    return run(Database{.path = database}, changes);
}

std::expected<void, CatalogTransaction::Failure> CatalogTransaction::run(const Database& database,
                                                                         const Changes& changes) {
    auto writer = SQLiteWriter::open(database.path);
    if (!writer) {
        return std::unexpected(writer.error());
    }
    // SQLite attaches only outside a transaction.
    if (database.attached) {
        if (auto attached = writer->attach(database.attached->path, database.attached->name);
            !attached) {
            return std::unexpected(attached.error());
        }
    }
    if (auto begun = writer->run("BEGIN IMMEDIATE"); !begun) {
        return std::unexpected(begun.error());
    }
    auto done = changes(*writer);
    if (done) {
        if (auto committed = writer->run("COMMIT"); !committed) {
            done = std::unexpected(committed.error());
        }
    }
    if (!done) {
        (void)writer->run("ROLLBACK");
    }
    return done;
}

std::expected<void, CatalogTransaction::Failure>
CatalogTransaction::updateOne(const SQLiteWriter& writer, const std::string& sql,
                              const std::string& failure) {
    auto changed = writer.run(sql);
    if (!changed) {
        return std::unexpected(changed.error());
    }
    if (*changed != 1) {
        return std::unexpected(Failure{failure});
    }
    return {};
}

} // namespace brevant
