#pragma once

#include "app/cli/Command.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant catalog history [--json]`: every marking of a catalog, newest
// first, with its catalog and whether it was undone.
class CatalogHistoryCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "history"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // Always 0.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    bool json_ = false;
};

} // namespace brevant::cli
