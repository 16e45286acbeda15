#include "ReviewSaver.hpp"

#include <utility>

namespace brevant::gui {

ReviewSaver::ReviewSaver(std::string path)
    : path_(std::move(path)) {}

void ReviewSaver::offer(SavedReview review) {
    std::lock_guard guard(waitingLock_);
    waiting_ = std::move(review);
}

void ReviewSaver::write() {
    std::lock_guard file(fileLock_);
    std::optional<SavedReview> review;
    {
        std::lock_guard guard(waitingLock_);
        review = std::exchange(waiting_, std::nullopt);
    }
    if (review) {
        static_cast<void>(store().save(std::move(*review)));
    }
}

std::optional<SavedReview> ReviewSaver::latest() {
    std::lock_guard file(fileLock_);
    return store().latest();
}

ReviewStore& ReviewSaver::store() {
    // Opened on first use, on a worker: the file is read then.
    if (!store_) {
        store_ = std::make_unique<ReviewStore>(path_);
    }
    return *store_;
}

} // namespace brevant::gui
