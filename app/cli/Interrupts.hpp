#pragma once

#include "engine/scan/CancellationFlag.hpp"

#include <thread>

namespace brevant::cli {

// While it lives, the first interrupt (Ctrl-C) cancels the flag so that the
// work in progress can stop cleanly; a second one ends the process at once
// with `exitStatus`. Only one may live at a time.
class InterruptWatcher {
public:
    InterruptWatcher(CancellationFlag& flag, int exitStatus);
    InterruptWatcher(const InterruptWatcher&) = delete;
    InterruptWatcher& operator=(const InterruptWatcher&) = delete;
    InterruptWatcher(InterruptWatcher&&) = delete;
    InterruptWatcher& operator=(InterruptWatcher&&) = delete;
    ~InterruptWatcher();

private:
    int wakeRead_ = -1;
    int wakeWrite_ = -1;
    bool installed_ = false;
    std::jthread thread_;
};

} // namespace brevant::cli
