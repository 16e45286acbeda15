#include "engine/support/ParallelMap.hpp"

#include "engine/scan/CancellationFlag.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <thread>

namespace brevant {
namespace {

TEST(ParallelMap, KeepsInputOrderWhateverFinishesFirst) {
    std::vector<int> items(200);
    for (int i = 0; i < 200; ++i) {
        items[i] = i;
    }
    CancellationFlag cancel;
    std::mutex mutex;
    std::set<std::thread::id> threads;
    auto results = parallelMap(items, cancel, [&](int value) {
        {
            std::lock_guard lock(mutex);
            threads.insert(std::this_thread::get_id());
        }
        // Early items take longest, so completion order differs from input order.
        std::this_thread::sleep_for(std::chrono::microseconds((200 - value) * 5));
        return value * 2;
    });
    ASSERT_EQ(results.size(), 200u);
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(results[i], std::optional<int>(i * 2));
    }
    EXPECT_GE(threads.size(), 2u);
    EXPECT_LE(threads.size(), kMaxWorkers);
}

TEST(ParallelMap, CancellationLeavesTheRestEmpty) {
    std::vector<int> items(100, 1);
    CancellationFlag cancel;
    std::atomic<int> done{0};
    auto results = parallelMap(items, cancel, [&](int) {
        if (++done == 10) {
            cancel.cancel();
        }
        return 1;
    });
    int filled = 0;
    for (const auto& slot : results) {
        filled += slot.has_value() ? 1 : 0;
    }
    EXPECT_GE(filled, 10);
    EXPECT_LE(filled, 10 + static_cast<int>(kMaxWorkers));
    EXPECT_FALSE(results.back().has_value());
    EXPECT_TRUE(parallelMap(std::vector<int>{}, cancel, [](int v) { return v; }).empty());
}

} // namespace
} // namespace brevant
