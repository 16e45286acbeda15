#include "Terminal.hpp"

#include "engine/support/PathText.hpp"

#include <array>
#include <fmt/format.h>
#include <unistd.h>

namespace brevant::cli {

bool isTerminal(std::FILE* stream) {
    return ::isatty(::fileno(stream)) == 1;
}

std::string shownPath(std::string_view path, std::string_view home) {
    bool underHome = !home.empty() && home != "/" && path.starts_with(home) &&
                     (path.size() == home.size() || path[home.size()] == '/');
    if (!underHome) {
        return path_text::display(path);
    }
    return "~" + path_text::display(path.substr(home.size()));
}

std::string humanBytes(std::int64_t bytes) {
    if (bytes < 1000) {
        return fmt::format("{} {}", bytes, bytes == 1 ? "byte" : "bytes");
    }
    static constexpr std::array<std::string_view, 6> kUnits = {"kB", "MB", "GB", "TB", "PB", "EB"};
    double value = static_cast<double>(bytes) / 1000.0;
    std::size_t unit = 0;
    // 999.96 kB would print as 1000.0 kB; show it as 1.0 MB.
    while (value >= 999.95 && unit + 1 < kUnits.size()) {
        value /= 1000.0;
        ++unit;
    }
    return fmt::format("{:.1f} {}", value, kUnits[unit]);
}

} // namespace brevant::cli
