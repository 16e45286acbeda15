#pragma once

#include "engine/scan/CancellationFlag.hpp"

#include <QObject>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

namespace brevant::gui {

// Runs engine work off the interface thread, so the interface never waits
// on disk or decoding, and hands what the work reports and what it answers
// back to the interface thread as queued calls in its owner's context. Each
// task gets a cancellation flag of its own. The destructor stops every task
// (their flags are set; tasks not yet started never start) and waits for
// those under way, so nothing arrives once the owner is gone.
class Worker {
public:
    // Reports of a task waiting for the interface thread. A report replaces
    // the one waiting before it when `replaces(waiting, newer)`, so fast
    // work cannot flood the event queue.
    template <class Progress> class Mailbox {
    public:
        using Replaces = std::function<bool(const Progress& waiting, const Progress& newer)>;

        explicit Mailbox(Replaces replaces)
            : replaces_(std::move(replaces)) {}

        // True when the interface thread has to be woken for it.
        bool put(Progress progress) {
            std::lock_guard lock(mutex_);
            if (!waiting_.empty() && replaces_(waiting_.back(), progress)) {
                waiting_.back() = std::move(progress);
            } else {
                waiting_.push_back(std::move(progress));
            }
            return !std::exchange(woken_, true);
        }

        std::vector<Progress> take() {
            std::lock_guard lock(mutex_);
            woken_ = false;
            return std::exchange(waiting_, {});
        }

    private:
        Replaces replaces_;
        std::mutex mutex_;
        std::vector<Progress> waiting_;
        bool woken_ = false;
    };

    // `threads` tasks run at once; the rest wait their turn.
    explicit Worker(QObject& owner, int threads = 1);
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    Worker(Worker&&) = delete;
    Worker& operator=(Worker&&) = delete;
    ~Worker();

    // Runs `work(cancel)` on a worker thread; `done(result)` follows on the
    // interface thread. Answers the task's flag, for whoever may stop it.
    template <class Work, class Done> std::shared_ptr<CancellationFlag> run(Work work, Done done) {
        return start(std::move(work), [] {}, std::move(done));
    }

    // The same for work that reports progress: `work(cancel, report)` calls
    // `report(progress)` on its thread; `show(progress)` gets the reports on
    // the interface thread, all of them before `done`.
    template <class Progress, class Work, class Show, class Done>
    std::shared_ptr<CancellationFlag> runReporting(Work work, Show show, Done done,
                                                   typename Mailbox<Progress>::Replaces replaces) {
        auto mailbox = std::make_shared<Mailbox<Progress>>(std::move(replaces));
        auto deliver = [mailbox, show = std::move(show)] {
            for (auto& progress : mailbox->take()) {
                show(progress);
            }
        };
        auto report = [this, mailbox, deliver](const Progress& progress) {
            if (mailbox->put(progress)) {
                post(deliver);
            }
        };
        return start([work = std::move(work),
                      report](const CancellationFlag& cancel) { return work(cancel, report); },
                     deliver, std::move(done));
    }

    // Tasks started whose answer has not arrived yet.
    [[nodiscard]] int pending() const { return pending_; }

    // Until every task has answered (for tests and screenshots).
    void waitForDone();

private:
    // The answer travels in a shared pointer, as a queued call is copied.
    template <class Task, class Flush, class Done>
    std::shared_ptr<CancellationFlag> start(Task task, Flush flush, Done done) {
        auto cancel = std::make_shared<CancellationFlag>();
        remember(cancel);
        ++pending_;
        pool_.start([this, cancel, task = std::move(task), flush = std::move(flush),
                     done = std::move(done)] {
            inBackground();
            auto answer = std::make_shared<std::invoke_result_t<Task, const CancellationFlag&>>(
                task(*cancel));
            post([this, flush, done, answer] {
                // Reports still waiting come before the answer.
                flush();
                --pending_;
                done(std::move(*answer));
            });
        });
        return cancel;
    }

    void post(std::function<void()> call);
    void remember(const std::shared_ptr<CancellationFlag>& cancel);
    static void inBackground();

    QObject& owner_;
    QThreadPool pool_;
    // Touched on the interface thread only, as is the count.
    std::vector<std::weak_ptr<CancellationFlag>> flags_;
    int pending_ = 0;
};

} // namespace brevant::gui
