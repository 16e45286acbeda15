#pragma once

#include "app/cli/CleanupHistory.hpp"
#include "app/cli/Command.hpp"
#include "app/cli/CompressionHistory.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant history [--json] [ID]`: the earlier cleanups, newest first, then
// the compressions, or one run's files with their outcomes and notes. Runs
// that were interrupted are reconciled first and shown as such.
class HistoryCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "history"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0, or 2 when no cleanup or compression has the id.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    [[nodiscard]] static int printJson(const Environment& environment,
                                       const CleanupHistory& history,
                                       const CompressionHistory& compressions,
                                       const std::optional<CleanupReport>& chosen,
                                       const std::optional<CompressionReport>& chosenCompression);

    bool json_ = false;
    std::string id_;
};

} // namespace brevant::cli
