#pragma once

#include "engine/cleanup/CleanupReport.hpp"

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// The earlier cleanups as the command line finds them: interrupted ones
// are reconciled first, so every report read here is settled.
struct CleanupHistory {
    // The reports of the journals that had no finished entry, now
    // reconciled, newest first.
    std::vector<CleanupReport> recovered;
    // Every cleanup, newest first.
    std::vector<CleanupReport> all;

    // Reconciles, then reads the journals of `directory`.
    [[nodiscard]] static CleanupHistory read(const std::string& directory);

    // The cleanup whose id is `id` or starts with it (case does not matter),
    // or the sentence saying why there is none.
    [[nodiscard]] std::expected<CleanupReport, std::string> find(std::string_view id) const;
};

} // namespace brevant::cli
