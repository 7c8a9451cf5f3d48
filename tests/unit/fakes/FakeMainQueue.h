#pragma once
#include "platform/MainQueue.h"

#include <algorithm>
#include <deque>
#include <vector>

namespace tunelark::test {

// A main queue that the test drains and a clock the test moves.
class FakeMainQueue : public MainQueue {
public:
    void post(std::function<void()> task) override {
        tasks_.push_back(std::move(task));
        ++posted_;
    }
    std::uint64_t postedCount() const override { return posted_; }
    std::unique_ptr<RepeatingTimer> startRepeating(std::chrono::milliseconds interval,
                                                   std::function<void()> action) override {
        timers_.push_back(std::make_shared<Timer>(Timer{interval, interval, std::move(action), true}));
        return std::make_unique<Handle>(timers_.back());
    }
    // Runs tasks, including the ones they post, until none is left; returns how many ran.
    int drain() {
        int count = 0;
        for (; !tasks_.empty(); ++count) {
            auto task = std::move(tasks_.front());
            tasks_.pop_front();
            task();
        }
        return count;
    }
    // Moves the clock in 1 ms steps, firing each due live timer and draining after each fire.
    void advance(std::chrono::milliseconds by) {
        for (auto ms = by.count(); ms > 0; --ms) {
            for (std::size_t i = 0; i < timers_.size(); ++i) {
                auto timer = timers_[i];
                if (!timer->live || (timer->remaining -= std::chrono::milliseconds(1)).count() > 0) continue;
                timer->remaining = timer->interval;
                timer->action();
                drain();
            }
        }
    }
    std::size_t pending() const { return tasks_.size(); }
    int liveTimers() const { return int(std::count_if(timers_.begin(), timers_.end(), [](auto& t) { return t->live; })); }

private:
    struct Timer {
        std::chrono::milliseconds interval, remaining;
        std::function<void()> action;
        bool live;
    };
    struct Handle : RepeatingTimer {
        explicit Handle(std::shared_ptr<Timer> t) : timer(std::move(t)) {}
        ~Handle() override { timer->live = false; }
        std::shared_ptr<Timer> timer;
    };
    std::deque<std::function<void()>> tasks_;
    std::uint64_t posted_ = 0;
    std::vector<std::shared_ptr<Timer>> timers_;
};

}  // namespace tunelark::test
