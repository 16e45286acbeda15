#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace brevant::cli {

// The stream is connected to a terminal (so progress may be drawn on it).
[[nodiscard]] bool isTerminal(std::FILE* stream);

// A path as printed for the user: on one line, whatever bytes its name
// holds, with a leading home folder written as "~".
[[nodiscard]] std::string shownPath(std::string_view path, std::string_view home);

// A byte count in decimal units with one decimal, as file managers show
// sizes: "512 bytes", "1 byte", "12.3 MB", "4.0 GB".
[[nodiscard]] std::string humanBytes(std::int64_t bytes);

} // namespace brevant::cli
