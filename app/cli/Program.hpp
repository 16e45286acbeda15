#pragma once

#include <string>
#include <vector>

namespace brevant::cli {

// Runs the program for its whole argument list (the program's path first)
// and answers the exit status.
[[nodiscard]] int run(const std::vector<std::string>& arguments);

} // namespace brevant::cli
