#pragma once

#include <mutex>

namespace brevant {

// Shared by a scan and all its workers; once set it stays set.
class CancellationFlag {
public:
    void cancel() {
        std::lock_guard lock(mutex_);
        cancelled_ = true;
    }

    [[nodiscard]] bool isCancelled() const {
        std::lock_guard lock(mutex_);
        return cancelled_;
    }

private:
    mutable std::mutex mutex_;
    bool cancelled_ = false;
};

} // namespace brevant
