#include "Terminal.hpp"

#include "engine/support/PathText.hpp"

#include <array>
#include <cctype>
#include <cerrno>
#include <fmt/format.h>
#include <optional>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace brevant::cli {

bool isTerminal(std::FILE* stream) {
    return ::isatty(::fileno(stream)) == 1;
}

int terminalWidth(std::FILE* stream) {
    struct winsize size{};
    int descriptor = ::fileno(stream);
    if (descriptor < 0 || ::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return 80;
    }
    return size.ws_col;
}

namespace {

// Waits until the descriptor has input; false when `cancel` was set first.
bool waitForInput(int descriptor, const CancellationFlag& cancel) {
    struct pollfd ready{.fd = descriptor, .events = POLLIN, .revents = 0};
    for (;;) {
        if (cancel.isCancelled()) {
            return false;
        }
        // A Ctrl-C interrupts the wait (EINTR) or sets the flag soon after.
        int count = ::poll(&ready, 1, 100);
        if (count > 0) {
            return true;
        }
        if (count < 0 && errno != EINTR) {
            return false;
        }
    }
}

// One line from the stream, without its line feed. Read byte by byte
// straight from the descriptor, so that a Ctrl-C can end the wait.
std::optional<std::string> readAnswer(std::FILE* in, const CancellationFlag& cancel) {
    int descriptor = ::fileno(in);
    std::string line;
    if (descriptor < 0) {
        for (int c; (c = std::fgetc(in)) != EOF && c != '\n';) {
            line += static_cast<char>(c);
        }
        return line;
    }
    for (;;) {
        if (!waitForInput(descriptor, cancel)) {
            return std::nullopt;
        }
        char byte = 0;
        ssize_t count = ::read(descriptor, &byte, 1);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0 || byte == '\n') {
            return line;
        }
        line += byte;
    }
}

} // namespace

bool confirm(std::string_view question, std::FILE* in, std::FILE* err,
             const CancellationFlag& cancel) {
    fmt::print(err, "{} ", question);
    std::fflush(err);
    auto answer = readAnswer(in, cancel);
    if (!answer) {
        fmt::print(err, "\n");
        return false;
    }
    std::string word;
    for (unsigned char c : *answer) {
        if (std::isspace(c) == 0) {
            word += static_cast<char>(std::tolower(c));
        }
    }
    return word == "y" || word == "yes";
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
