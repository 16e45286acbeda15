#pragma once

#include "engine/support/Json.hpp"
#include "engine/support/Uuid.hpp"

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// The folder of mark records that a catalog marker keeps, one JSON file per
// marking named after the record's id. Records are written for people as
// much as for the program: pretty printed, keys sorted.
struct MarkRecordFiles {
    static constexpr std::string_view kExtension = ".json";

    [[nodiscard]] static std::string pathFor(const std::string& directory, const Uuid& id);

    // Creates the folder with its parents when missing and writes the
    // document atomically, replacing an earlier save of the same record.
    // The error is a sentence naming what failed.
    [[nodiscard]] static std::expected<void, std::string>
    save(const std::string& directory, const Uuid& id, const json::Json& document);

    // The document text with its keys sorted at every level.
    [[nodiscard]] static std::string sortedText(const json::Json& document);

    // The text of every regular ".json" file in the folder, in name order;
    // files that cannot be read are left out, and so is a missing folder.
    [[nodiscard]] static std::vector<std::string> documents(const std::string& directory);
};

} // namespace brevant
