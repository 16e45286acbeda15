#pragma once

#include "engine/review/ReviewStore.hpp"
#include "engine/review/SavedReview.hpp"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace brevant::gui {

// Writes the window's review to the saved reviews file off the interface
// thread. The interface hands over the newest state (offer) and has a task
// write it (write); tasks may run on several threads, but each writes the
// newest state offered so far, so an older one never lands after a newer.
class ReviewSaver {
public:
    explicit ReviewSaver(std::string path);

    // On the interface thread: never waits on disk.
    void offer(SavedReview review);
    // On a worker: writes what was offered last, if anything is waiting.
    void write();
    // On a worker: the review saved most recently, read from the file.
    [[nodiscard]] std::optional<SavedReview> latest();

private:
    ReviewStore& store();

    std::string path_;
    std::mutex waitingLock_;
    std::optional<SavedReview> waiting_;
    // Held while the file is read or written.
    std::mutex fileLock_;
    std::unique_ptr<ReviewStore> store_;
};

} // namespace brevant::gui
