#include "SuggestedMarking.hpp"

#include "engine/review/ReviewSession.hpp"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace brevant::gui {

namespace {

// Well under the 50 ms a user notices, with room for the paint between.
constexpr qint64 kSliceMilliseconds = 15;
constexpr std::size_t kGroupsAtATime = 256;

} // namespace

SuggestedMarking::SuggestedMarking(QObject* parent)
    : QObject(parent) {
    timer_.setInterval(0);
    connect(&timer_, &QTimer::timeout, this, &SuggestedMarking::step);
}

void SuggestedMarking::start(std::shared_ptr<ReviewSession> session) {
    stop();
    session_ = std::move(session);
    if (session_ == nullptr) {
        return;
    }
    step();
    if (isRunning()) {
        timer_.start();
    }
}

void SuggestedMarking::stop() {
    timer_.stop();
    session_.reset();
    next_ = 0;
    marked_ = 0;
}

void SuggestedMarking::finish() {
    if (!isRunning()) {
        return;
    }
    markUpTo(session_->groups().size());
    end();
}

void SuggestedMarking::step() {
    QElapsedTimer clock;
    clock.start();
    std::size_t groups = session_->groups().size();
    while (next_ < groups && clock.elapsed() < kSliceMilliseconds) {
        markUpTo(std::min(groups, next_ + kGroupsAtATime));
    }
    if (next_ < groups) {
        Q_EMIT progressed(next_, groups);
        return;
    }
    end();
}

void SuggestedMarking::markUpTo(std::size_t last) {
    marked_ += session_->markSuggestedIn(next_, last);
    next_ = last;
}

void SuggestedMarking::end() {
    int marked = marked_;
    stop();
    Q_EMIT finished(marked);
}

} // namespace brevant::gui
