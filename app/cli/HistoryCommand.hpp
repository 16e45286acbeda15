#pragma once

#include "app/cli/Command.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant history [--json] [ID]`: the earlier cleanups, newest first, or
// one cleanup's pictures with their outcomes and notes. Cleanups that were
// interrupted are reconciled first and shown as such.
class HistoryCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "history"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0, or 2 when no cleanup has the id.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    bool json_ = false;
    std::string id_;
};

} // namespace brevant::cli
