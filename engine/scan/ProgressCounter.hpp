#pragma once

#include <mutex>

namespace brevant {

// Counts finished items across concurrent workers.
class ProgressCounter {
public:
    // Adds one and answers the new count.
    int increment() {
        std::lock_guard lock(mutex_);
        return ++count_;
    }

    [[nodiscard]] int count() const {
        std::lock_guard lock(mutex_);
        return count_;
    }

private:
    mutable std::mutex mutex_;
    int count_ = 0;
};

} // namespace brevant
