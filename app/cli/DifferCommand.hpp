#pragma once

#include "app/cli/Command.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant differ PATH PATH...`: these pictures are different photos, so no
// later scan puts two of them in one similar group or series.
// `brevant differ --list [--json]`: the decisions, oldest first.
// `brevant differ --forget ID`: drops one decision.
// `brevant differ --reset`: moves a file that cannot be read aside.
class DifferCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "differ"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0; 2 when the pictures cannot be declared different (fewer than two,
    // unreadable, identical copies) or the decision is unknown; 1 when the
    // file cannot be read or written.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    [[nodiscard]] int declare(const Environment& environment) const;
    [[nodiscard]] int list(const Environment& environment) const;
    [[nodiscard]] int forget(const Environment& environment) const;
    [[nodiscard]] int reset(const Environment& environment) const;

    std::vector<std::string> paths_;
    bool list_ = false;
    bool json_ = false;
    int forget_ = 0;
    bool reset_ = false;
};

} // namespace brevant::cli
