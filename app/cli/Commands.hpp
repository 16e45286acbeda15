#pragma once

#include "app/cli/Command.hpp"

#include <memory>
#include <string_view>
#include <vector>

namespace brevant::cli {

// Every subcommand of `brevant`, in the order `brevant --help` lists them.
[[nodiscard]] std::vector<std::unique_ptr<Command>> makeCommands();

// The word names one of them.
[[nodiscard]] bool isCommandName(std::string_view word);

} // namespace brevant::cli
