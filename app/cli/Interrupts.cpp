#include "Interrupts.hpp"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace brevant::cli {

namespace {

// Shared with the signal handler, which may only touch these and make
// async-signal-safe calls: it never takes the flag's lock itself but wakes
// the watching thread through a pipe.
volatile std::sig_atomic_t gInterrupts = 0;
volatile std::sig_atomic_t gWakeDescriptor = -1;
volatile std::sig_atomic_t gExitStatus = 1;
struct sigaction gPrevious{};

constexpr char kInterrupted = 'i';
constexpr char kStop = 's';

extern "C" void onInterrupt(int /*signal*/) {
    int saved = errno;
    gInterrupts = gInterrupts + 1;
    if (gInterrupts >= 2) {
        ::_exit(gExitStatus);
    }
    char byte = kInterrupted;
    [[maybe_unused]] auto written = ::write(gWakeDescriptor, &byte, 1);
    errno = saved;
}

} // namespace

InterruptWatcher::InterruptWatcher(CancellationFlag& flag, int exitStatus) {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return;
    }
    wakeRead_ = ends[0];
    wakeWrite_ = ends[1];
    gInterrupts = 0;
    gWakeDescriptor = wakeWrite_;
    gExitStatus = exitStatus;
    thread_ = std::jthread([this, &flag] {
        for (;;) {
            char byte = 0;
            ssize_t count = ::read(wakeRead_, &byte, 1);
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0 || byte == kStop) {
                return;
            }
            flag.cancel();
        }
    });
    struct sigaction action{};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    installed_ = ::sigaction(SIGINT, &action, &gPrevious) == 0;
}

InterruptWatcher::~InterruptWatcher() {
    if (installed_) {
        ::sigaction(SIGINT, &gPrevious, nullptr);
    }
    if (wakeWrite_ < 0) {
        return;
    }
    char byte = kStop;
    [[maybe_unused]] auto written = ::write(wakeWrite_, &byte, 1);
    if (thread_.joinable()) {
        thread_.join();
    }
    gWakeDescriptor = -1;
    ::close(wakeRead_);
    ::close(wakeWrite_);
}

} // namespace brevant::cli
