#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brevant::cli {

// What `brevant` does when started without arguments: it opens the desktop
// window when there is a display to show it on and the window program is
// installed, and prints its usage otherwise (over ssh, on a server).
struct DesktopStart {
    static constexpr std::string_view kProgram = "brevant-desktop";

    // What the choice depends on.
    struct Surroundings {
        // $DISPLAY and $WAYLAND_DISPLAY, empty when unset.
        std::string display;
        std::string waylandDisplay;
        // The folder holding the running `brevant`.
        std::string ownFolder;
        // $PATH.
        std::string searchPath;

        friend bool operator==(const Surroundings&, const Surroundings&) = default;
    };

    // Those of this process.
    [[nodiscard]] static Surroundings current();

    // The window program to start: nothing without a display; else the one
    // beside the running program, else the first on the PATH; nothing when
    // neither is an executable file. Relative PATH entries are passed over,
    // so the current folder never supplies it.
    [[nodiscard]] static std::optional<std::string> program(const Surroundings& surroundings);

    // Replaces this process by the program, with the same environment.
    // Answers only when that failed: the reason.
    [[nodiscard]] static std::string start(const std::string& program);
};

} // namespace brevant::cli
