#pragma once

namespace brevant::platform {

// Starts libvips once per process, thread-safely. We run our own workers, so
// libvips gets one thread per operation and no operation cache (a cache would
// only keep whole decoded photos alive).
struct VipsRuntime {
    // False when libvips could not start; image operations then fail.
    static bool ensureStarted();
};

} // namespace brevant::platform
