#pragma once
#include "platform/MainQueue.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace tunelark::test {

// A main queue that the test drains and a clock the test moves.
class FakeMainQueue : public MainQueue {
public:
    void post(std::function<void()> task) override { tasks_.push_back(std::move(task)); }

    std::unique_ptr<RepeatingTimer> startRepeating(std::chrono::milliseconds interval,
                                                   std::function<void()> action) override {
        auto entry = std::make_shared<TimerEntry>(TimerEntry{interval, interval, std::move(action), true});
        timers_.push_back(entry);
        return std::make_unique<Handle>(entry);
    }

    // Runs queued tasks, including the ones they post, until the queue is empty; returns how many ran.
    int drain() {
        int count = 0;
        while (!tasks_.empty()) {
            auto task = std::move(tasks_.front());
            tasks_.pop_front();
            task();
            ++count;
        }
        return count;
    }

    // Moves the clock, firing each live timer as often as its interval fits, draining after each fire.
    void advance(std::chrono::milliseconds by) {
        for (auto step = std::chrono::milliseconds(0); step < by; step += std::chrono::milliseconds(1)) {
            for (std::size_t i = 0; i < timers_.size(); ++i) {
                auto timer = timers_[i];
                if (!timer->live) continue;
                timer->remaining -= std::chrono::milliseconds(1);
                if (timer->remaining.count() <= 0) {
                    timer->remaining = timer->interval;
                    timer->action();
                    drain();
                }
            }
        }
    }

    std::size_t pending() const { return tasks_.size(); }
    int liveTimers() const {
        int n = 0;
        for (auto& t : timers_) n += t->live ? 1 : 0;
        return n;
    }

private:
    struct TimerEntry {
        std::chrono::milliseconds interval;
        std::chrono::milliseconds remaining;
        std::function<void()> action;
        bool live;
    };
    struct Handle : RepeatingTimer {
        explicit Handle(std::shared_ptr<TimerEntry> e) : entry(std::move(e)) {}
        ~Handle() override { entry->live = false; }
        std::shared_ptr<TimerEntry> entry;
    };
    std::deque<std::function<void()>> tasks_;
    std::vector<std::shared_ptr<TimerEntry>> timers_;
};

}  // namespace tunelark::test
