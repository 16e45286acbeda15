#pragma once

#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ScanResult.hpp"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant scan [--json] FOLDER...`: finds identical copies in the folders
// and prints them, or the whole scan result as JSON. Changes nothing.
struct ScanCommand {
    static constexpr int kSuccess = 0;
    static constexpr int kCancelled = 1;
    static constexpr int kUsageError = 2;

    // Where the command writes and what it needs of the process around it.
    struct Environment {
        std::FILE* out = stdout;
        std::FILE* err = stderr;
        const CancellationFlag* cancel = nullptr;
        // Written as "~" at the start of paths.
        std::string home;
        // Draw progress on `err` (only when it is a terminal).
        bool showProgress = false;
    };

    // Runs with the process's own streams, home folder and Ctrl-C handling.
    // `arguments` are those after "scan". Answers the exit status.
    [[nodiscard]] static int main(const std::vector<std::string>& arguments);

    [[nodiscard]] static int run(const std::vector<std::string>& arguments,
                                 const Environment& environment);

    // The groups, then the summary and the counts of what was left out.
    [[nodiscard]] static std::string report(const ScanResult& result, std::string_view home);

    // The usage lines of the command.
    [[nodiscard]] static std::string_view usage();
};

} // namespace brevant::cli
