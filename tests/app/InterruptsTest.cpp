#include "app/cli/Interrupts.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace brevant::cli {
namespace {

// In a child process, so that the second interrupt may end it.
TEST(InterruptWatcher, FirstInterruptCancelsAndTheSecondEndsTheProcess) {
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        CancellationFlag flag;
        InterruptWatcher watcher(flag, 7);
        std::raise(SIGINT);
        // The watching thread cancels soon after; allow it ample time.
        for (int i = 0; i < 10'000 && !flag.isCancelled(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        if (!flag.isCancelled()) {
            ::_exit(3);
        }
        std::raise(SIGINT);
        ::_exit(4);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(InterruptWatcher, LeavesInterruptsAsTheyWereWhenGone) {
    struct sigaction before{};
    ::sigaction(SIGINT, nullptr, &before);
    {
        CancellationFlag flag;
        InterruptWatcher watcher(flag, 1);
    }
    struct sigaction after{};
    ::sigaction(SIGINT, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
}

} // namespace
} // namespace brevant::cli
