#pragma once

#include "app/cli/Command.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant catalog mark [--yes] [--dry-run] [--json] CATALOG`: flags the
// suggested extra copies of the catalog's identical groups Rejected in
// Lightroom Classic, or tags them Red in Capture One, after a backup and
// only while that application is closed; the user then deletes them there.
class CatalogMarkCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "mark"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0 when marked (or nothing to mark, or a dry run); 1 when stopped,
    // declined, refused or failed; 3 when the catalog could not be read.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    std::string catalog_;
    bool json_ = false;
    bool yes_ = false;
    bool dryRun_ = false;
};

} // namespace brevant::cli
