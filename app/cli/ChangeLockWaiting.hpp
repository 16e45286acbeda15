#pragma once

#include "app/cli/Command.hpp"
#include "engine/cleanup/ChangeLock.hpp"

namespace brevant::cli {

// How the command line waits while another run changes pictures or records
// in the data folder: it says once on `err` whom it waits for, and stops
// waiting at Ctrl-C (the command is then refused as busy, having changed
// nothing).
[[nodiscard]] ChangeLock::Waiting waitingOn(const Environment& environment);

// Takes the data folder's change lock that way; on a refusal its sentence
// goes to `err` after "brevant COMMAND: ".
[[nodiscard]] std::optional<ChangeLock> takeChangeLock(const Environment& environment,
                                                       std::string_view command);

} // namespace brevant::cli
