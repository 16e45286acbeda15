#pragma once

#include "app/cli/Command.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant restore [--beside] [--json] ID (PATH... | --all)`: Put Back.
// Moves pictures a cleanup put in the Trash back where they were, never over
// anything; with --beside, one whose place is taken goes back under a free
// name beside it.
class RestoreCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "restore"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0 when every picture asked for is back; 1 when one is not; 2 for an
    // unknown id or nothing named.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    std::string id_;
    std::vector<std::string> paths_;
    bool all_ = false;
    bool beside_ = false;
    bool json_ = false;
};

} // namespace brevant::cli
