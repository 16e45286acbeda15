#pragma once

#include "engine/compression/CompressionFinder.hpp"
#include "engine/compression/CompressionReport.hpp"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

// How the command line shows a compression: the candidates before it runs,
// the report read back from its journal, and its line among earlier runs.
// Text for people, JSON with the same content for scripts.
namespace brevant::cli::compression_text {

// Each file with its kind, size and expected saving, the files passed over
// with why, then the totals.
[[nodiscard]] std::string plan(const CompressionCandidates& found, std::string_view home);
[[nodiscard]] nlohmann::ordered_json planJson(const CompressionCandidates& found);

// "Write smaller copies of 3 files and move the originals (12.3 MB) to the
// Trash? [y/N]"
[[nodiscard]] std::string question(const CompressionPlan& plan);

// The title, each file with its outcome (its copy, or why not) and notes,
// the counts, the space freed and where the journal is.
[[nodiscard]] std::string report(const CompressionReport& report, std::string_view home);
[[nodiscard]] nlohmann::ordered_json reportJson(const CompressionReport& report);

// "2 compressed, 1 refused" and, when any, ", 1 put back".
[[nodiscard]] std::string counts(const CompressionReport& report);

// One line per earlier compression: date, id, counts, space freed.
[[nodiscard]] std::string historyLine(const CompressionReport& report);
[[nodiscard]] nlohmann::ordered_json historyJson(const CompressionReport& report);

} // namespace brevant::cli::compression_text
