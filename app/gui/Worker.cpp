#include "Worker.hpp"

#include "engine/platform/ThreadPriority.hpp"

#include <QCoreApplication>

namespace brevant::gui {

Worker::Worker(QObject& owner, int threads)
    : owner_(owner) {
    pool_.setMaxThreadCount(threads);
}

Worker::~Worker() {
    for (const auto& flag : flags_) {
        if (auto cancel = flag.lock()) {
            cancel->cancel();
        }
    }
    pool_.clear();
    pool_.waitForDone();
}

void Worker::waitForDone() {
    while (pending_ > 0) {
        pool_.waitForDone();
        QCoreApplication::processEvents();
    }
}

void Worker::post(std::function<void()> call) {
    QMetaObject::invokeMethod(&owner_, std::move(call), Qt::QueuedConnection);
}

void Worker::remember(const std::shared_ptr<CancellationFlag>& cancel) {
    std::erase_if(flags_, [](const auto& flag) { return flag.expired(); });
    flags_.push_back(cancel);
}

void Worker::inBackground() {
    platform::runInBackground();
}

} // namespace brevant::gui
