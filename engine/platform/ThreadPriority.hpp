#pragma once

namespace brevant::platform {

// The nice value of background work: low enough that an interface thread
// on the same cores always gets its turn, high enough that the work still
// runs on a machine busy with other programs.
inline constexpr int kBackgroundNice = 10;

// Gives the calling thread the background nice value (never a better one
// than it has). Threads it starts afterwards inherit it, so a scan's
// parallel workers yield to the interface as well.
void runInBackground();

} // namespace brevant::platform
