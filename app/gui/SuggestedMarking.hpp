#pragma once

#include <QObject>
#include <QTimer>

#include <cstddef>
#include <memory>

namespace brevant {
class ReviewSession;
}

namespace brevant::gui {

// "Mark Suggested Copies in Every Group" over a result of any size: the
// groups are marked a slice at a time between the window's other events,
// so that the window keeps answering while a million pictures are marked.
// A result small enough is marked at once, before `start` returns.
class SuggestedMarking : public QObject {
    Q_OBJECT

public:
    explicit SuggestedMarking(QObject* parent = nullptr);

    void start(std::shared_ptr<ReviewSession> session);
    // Leaves the marks made so far; `finished` is not sent.
    void stop();
    // Marks every group left at once: what comes next (the cleanup) must
    // see every mark the user asked for.
    void finish();

    [[nodiscard]] bool isRunning() const { return session_ != nullptr; }

Q_SIGNALS:
    void progressed(std::size_t groupsDone, std::size_t groups);
    void finished(int marked);

private:
    void step();
    void markUpTo(std::size_t last);
    void end();

    std::shared_ptr<ReviewSession> session_;
    std::size_t next_ = 0;
    int marked_ = 0;
    QTimer timer_;
};

} // namespace brevant::gui
