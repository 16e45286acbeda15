#include "CatalogCommand.hpp"

#include "app/cli/CatalogHistoryCommand.hpp"
#include "app/cli/CatalogMarkCommand.hpp"
#include "app/cli/CatalogScanCommand.hpp"
#include "app/cli/CatalogUndoCommand.hpp"
#include "app/cli/ExitStatus.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace brevant::cli {

CatalogCommand::CatalogCommand() {
    commands_.emplace_back(std::make_unique<CatalogScanCommand>(), nullptr);
    commands_.emplace_back(std::make_unique<CatalogMarkCommand>(), nullptr);
    commands_.emplace_back(std::make_unique<CatalogHistoryCommand>(), nullptr);
    commands_.emplace_back(std::make_unique<CatalogUndoCommand>(), nullptr);
}

std::string_view CatalogCommand::summary() const {
    return "Find duplicates in a photo catalog or library and mark them there";
}

std::vector<std::string> CatalogCommand::synopsis() const {
    std::vector<std::string> lines;
    for (const auto& [command, app] : commands_) {
        auto own = command->synopsis();
        lines.insert(lines.end(), own.begin(), own.end());
    }
    return lines;
}

void CatalogCommand::define(CLI::App& app) {
    for (auto& [command, sub] : commands_) {
        sub = app.add_subcommand(std::string(command->name()), std::string(command->summary()));
        command->define(*sub);
        sub->callback([this, chosen = command.get()] { chosen_ = chosen; });
    }
    app.require_subcommand(0, 1);
}

int CatalogCommand::run(const Environment& environment) {
    if (chosen_ != nullptr) {
        return chosen_->run(environment);
    }
    fmt::print(environment.err, "brevant catalog: no command given\nUsage:\n");
    for (const auto& line : synopsis()) {
        fmt::print(environment.err, "  {}\n", line);
    }
    fmt::print(environment.err, "Try 'brevant catalog --help' for more information.\n");
    return ExitStatus::kUsage;
}

std::optional<std::string> CatalogCommand::missingArgument() const {
    for (const auto& [command, app] : commands_) {
        if (app != nullptr && app->parsed()) {
            return command->missingArgument();
        }
    }
    return std::nullopt;
}

} // namespace brevant::cli
