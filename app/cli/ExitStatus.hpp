#pragma once

namespace brevant::cli {

// The statuses `brevant` ends with; scripts rely on them, so a value never
// changes meaning. The manual page and the README list them.
struct ExitStatus {
    static constexpr int kSuccess = 0;
    // Stopped by Ctrl-C, or the work failed part way.
    static constexpr int kCancelled = 1;
    static constexpr int kFailed = 1;
    // The arguments were wrong; nothing was done.
    static constexpr int kUsage = 2;
    // Every chosen folder was refused, so nothing could be looked at; tells
    // "nothing found" apart from "nothing could be scanned".
    static constexpr int kNothingScanned = 3;
};

} // namespace brevant::cli
