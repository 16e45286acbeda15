#pragma once

#include "app/cli/Command.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brevant::cli {

// `brevant catalog scan|mark|history|undo`: duplicates inside a Lightroom
// Classic catalog (.lrcat) or a Capture One catalog (.cocatalog), marking
// them there and undoing a marking. Each subcommand is a command of its own
// (CatalogScanCommand, CatalogMarkCommand, CatalogHistoryCommand,
// CatalogUndoCommand); this one only chooses among them.
class CatalogCommand final : public Command {
public:
    CatalogCommand();

    [[nodiscard]] std::string_view name() const override { return "catalog"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // The subcommand's status; 2 when none was given.
    [[nodiscard]] int run(const Environment& environment) override;
    // The subcommand's missing argument.
    [[nodiscard]] std::optional<std::string> missingArgument() const override;

private:
    // Each subcommand with the parser it was given.
    std::vector<std::pair<std::unique_ptr<Command>, CLI::App*>> commands_;
    Command* chosen_ = nullptr;
};

} // namespace brevant::cli
