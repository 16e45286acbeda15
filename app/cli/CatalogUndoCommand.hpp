#pragma once

#include "app/cli/Command.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant catalog undo RECORD`: gives the photos of one marking their
// earlier flags or tags back, where nobody changed them since.
class CatalogUndoCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "undo"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0 when undone (or undone before); 1 when refused; 2 for a record that
    // is not there.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    std::string record_;
};

} // namespace brevant::cli
