#include "ThreadPriority.hpp"

#include <cerrno>
#include <sys/resource.h>
#include <unistd.h>

namespace brevant::platform {

void runInBackground() {
    // On Linux the nice value belongs to each thread; PRIO_PROCESS with a
    // thread id sets that thread's alone.
    auto thread = static_cast<id_t>(::gettid());
    errno = 0;
    int current = ::getpriority(PRIO_PROCESS, thread);
    if (errno != 0 || current >= kBackgroundNice) {
        return;
    }
    // Failing leaves the thread as it was, which only costs smoothness.
    (void)::setpriority(PRIO_PROCESS, thread, kBackgroundNice);
}

} // namespace brevant::platform
