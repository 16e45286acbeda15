#pragma once

#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/CleanupReport.hpp"
#include "engine/review/ReviewSession.hpp"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

// How the command line shows a cleanup: the plan before it runs, the report
// read back from its journal, and the list of earlier ones. Text for people,
// JSON with the same content for scripts.
namespace brevant::cli::cleanup_text {

// Per group with something to move: the copy kept with the reason it was
// chosen, the other copies kept with theirs, and the copies to move with
// their sizes; then the totals.
[[nodiscard]] std::string plan(const CleanupPlan& plan, const ReviewSession& session,
                               std::string_view home);
[[nodiscard]] nlohmann::ordered_json planJson(const CleanupPlan& plan,
                                              const ReviewSession& session);

// "Move 3 pictures (12.3 MB) to the Trash? [y/N]"
[[nodiscard]] std::string question(const CleanupPlan& plan);

// The sizes of the planned pictures at the scan.
[[nodiscard]] std::int64_t plannedBytes(const CleanupPlan& plan);

// The title ("Cleanup finished", or the interrupted one with its
// explanation), every item with its outcome and notes, the counts, the
// freed bytes, the general note and where the journal is.
[[nodiscard]] std::string report(const CleanupReport& report, std::string_view home);
[[nodiscard]] nlohmann::ordered_json reportJson(const CleanupReport& report);

// "4 moved, 1 skipped, 0 failed, 0 unknown" and, when any, ", 2 put back".
[[nodiscard]] std::string counts(const CleanupReport& report);

// One line per earlier cleanup: its date in local time, id, counts and the
// bytes still in the Trash.
[[nodiscard]] std::string historyLine(const CleanupReport& report);
[[nodiscard]] nlohmann::ordered_json historyJson(const CleanupReport& report);

// "2026-11-23 16:05" in the system time zone.
[[nodiscard]] std::string localDate(Date date);

} // namespace brevant::cli::cleanup_text
