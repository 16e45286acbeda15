#pragma once

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace brevant {

inline constexpr std::size_t kMaxWorkers = 4;

// Hands out the next item index to whichever worker asks first.
class Counter {
public:
    [[nodiscard]] std::size_t next() {
        std::lock_guard lock(mutex_);
        return value_++;
    }

private:
    std::mutex mutex_;
    std::size_t value_ = 0;
};

// One result slot per input item; each worker writes only its own slot.
template <class Result> class ResultBox {
public:
    explicit ResultBox(std::size_t count)
        : values_(count) {}

    void store(std::size_t index, Result value) {
        std::lock_guard lock(mutex_);
        values_[index] = std::move(value);
    }

    [[nodiscard]] std::vector<std::optional<Result>> take() {
        std::lock_guard lock(mutex_);
        return std::move(values_);
    }

private:
    std::mutex mutex_;
    std::vector<std::optional<Result>> values_;
};

// Runs `transform` over `items` on at most four workers and returns the
// results in input order. A slot stays empty only when the cancellation flag
// was set before its item was taken. `cancel` is anything with isCancelled().
template <class Item, class Cancel, class Transform>
[[nodiscard]] auto parallelMap(const std::vector<Item>& items, const Cancel& cancel,
                               Transform transform) {
    using Result = std::invoke_result_t<Transform&, const Item&>;
    ResultBox<Result> box(items.size());
    Counter counter;
    auto work = [&] {
        for (;;) {
            std::size_t index = counter.next();
            if (index >= items.size() || cancel.isCancelled()) {
                return;
            }
            box.store(index, transform(items[index]));
        }
    };
    std::size_t workers = std::min(items.size(), kMaxWorkers);
    if (workers <= 1) {
        work();
        return box.take();
    }
    {
        std::vector<std::jthread> threads;
        threads.reserve(workers - 1);
        for (std::size_t i = 1; i < workers; ++i) {
            threads.emplace_back(work);
        }
        work();
    }
    return box.take();
}

} // namespace brevant
