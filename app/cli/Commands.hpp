#pragma once

#include "app/cli/Command.hpp"

#include <memory>
#include <vector>

namespace brevant::cli {

// Every subcommand of `brevant`, in the order `brevant --help` lists them.
[[nodiscard]] std::vector<std::unique_ptr<Command>> makeCommands();

} // namespace brevant::cli
