#pragma once

#include "engine/catalogs/CaptureOneMarkRecord.hpp"
#include "engine/catalogs/CatalogSource.hpp"
#include "engine/catalogs/LightroomMarkRecord.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/Json.hpp"
#include "engine/support/Uuid.hpp"

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace brevant::cli {

// One marking of either catalog, as `catalog history` and `catalog undo`
// show it.
struct CatalogMarking {
    std::variant<LightroomMarkRecord, CaptureOneMarkRecord> record;

    // Every marking in the data folder, newest first.
    [[nodiscard]] static std::vector<CatalogMarking> all();

    [[nodiscard]] CatalogSource::Application application() const;
    [[nodiscard]] Uuid id() const;
    [[nodiscard]] Date date() const;
    [[nodiscard]] std::size_t count() const;
    [[nodiscard]] bool restored() const;
    [[nodiscard]] std::string catalog() const;
    [[nodiscard]] json::Json document() const;

    // The refusal's text; empty when the marking was undone.
    [[nodiscard]] std::string undo() const;
};

} // namespace brevant::cli
