#pragma once

#include "app/cli/Command.hpp"

#include <string>
#include <vector>

namespace brevant::cli {

// Runs the program for its whole argument list (the program's path first)
// and answers the exit status: the command when the list starts with one's
// name; else the report when the list asks for one; the desktop window or
// the usage without arguments; else the refusal of what it holds.
[[nodiscard]] int run(const std::vector<std::string>& arguments);

// The commands alone (`brevant scan ...`, --help, --version), with the
// streams and flag of `environment`.
[[nodiscard]] int runCommand(const std::vector<std::string>& arguments,
                             const Environment& environment);

} // namespace brevant::cli
