#include "CleanupHistory.hpp"

#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/support/PathNames.hpp"

#include <fmt/format.h>

namespace brevant::cli {

CleanupHistory CleanupHistory::read(const std::string& directory) {
    CleanupHistory history;
    history.recovered = CleanupJournal::recoverInterrupted(directory);
    history.all = CleanupJournal::history(directory);
    return history;
}

std::expected<CleanupReport, std::string> CleanupHistory::find(std::string_view id) const {
    std::string wanted = PathNames::asciiUppercased(id);
    const CleanupReport* found = nullptr;
    for (const auto& report : all) {
        if (wanted.empty() || !report.planID.text().starts_with(wanted)) {
            continue;
        }
        if (found != nullptr) {
            return std::unexpected(
                fmt::format("several cleanups have an id starting with {}; give more of it", id));
        }
        found = &report;
    }
    if (found == nullptr) {
        return std::unexpected(
            fmt::format("no cleanup has the id {} ('brevant history' lists them)", id));
    }
    return *found;
}

} // namespace brevant::cli
