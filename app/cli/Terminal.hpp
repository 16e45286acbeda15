#pragma once

#include "engine/scan/CancellationFlag.hpp"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace brevant::cli {

// The stream is connected to a terminal (so progress may be drawn on it).
[[nodiscard]] bool isTerminal(std::FILE* stream);

// The stream's terminal width in columns; 80 when it is not a terminal.
[[nodiscard]] int terminalWidth(std::FILE* stream);

// Asks a yes-or-no question (`question` ends with its choices, "[y/N]") on
// `err` and reads a line from `in`. Only "y" or "yes", in any case, is a
// yes; an empty line, the end of the input or a Ctrl-C that sets `cancel`
// while it waits are a no.
[[nodiscard]] bool confirm(std::string_view question, std::FILE* in, std::FILE* err,
                           const CancellationFlag& cancel);

// A path as printed for the user: on one line, whatever bytes its name
// holds, with a leading home folder written as "~".
[[nodiscard]] std::string shownPath(std::string_view path, std::string_view home);

// A byte count in decimal units with one decimal, as file managers show
// sizes: "512 bytes", "1 byte", "12.3 MB", "4.0 GB".
[[nodiscard]] std::string humanBytes(std::int64_t bytes);

} // namespace brevant::cli
