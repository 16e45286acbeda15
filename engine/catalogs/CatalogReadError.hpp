#pragma once

#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace brevant {

// Why a catalog could not be read. Reading never changes the catalog, so
// every case leaves it as it was.
struct CatalogReadError {
    enum class Kind {
        // `detail`: SQLite's message, or the catalog's busy sentence.
        unreadable,
        // `detail`: the missing table ("no " + table) or column (table.column).
        unknownLayout,
        // `detail`: the sentence naming the kind of catalog that was expected.
        notACatalog,
    };

    Kind kind = Kind::unreadable;
    std::string detail;

    [[nodiscard]] static CatalogReadError unreadable(std::string message) {
        return {Kind::unreadable, std::move(message)};
    }

    [[nodiscard]] static CatalogReadError unknownLayout(std::string detail) {
        return {Kind::unknownLayout, std::move(detail)};
    }

    [[nodiscard]] static CatalogReadError notACatalog(std::string sentence) {
        return {Kind::notACatalog, std::move(sentence)};
    }

    // The sentence shown to the user.
    [[nodiscard]] std::string text() const;

    friend bool operator==(const CatalogReadError&, const CatalogReadError&) = default;
};

template <> struct EnumCases<CatalogReadError::Kind> {
    using Kind = CatalogReadError::Kind;
    static constexpr std::array kAll{Kind::unreadable, Kind::unknownLayout, Kind::notACatalog};
};

[[nodiscard]] std::string_view rawValue(CatalogReadError::Kind kind);
void PrintTo(CatalogReadError::Kind kind, std::ostream* os);
void PrintTo(const CatalogReadError& error, std::ostream* os);

} // namespace brevant
