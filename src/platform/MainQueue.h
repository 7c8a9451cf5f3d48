#pragma once
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace tunelark {

// A repeating timer; destroying it stops it, and its action never runs afterwards.
class RepeatingTimer {
public:
    virtual ~RepeatingTimer() = default;
};

// The main thread's first-in, first-out task queue and its timers.
// Every method is called on the main thread; tasks and timer actions run there too, never from inside
// the call that posted or started them.
class MainQueue {
public:
    virtual ~MainQueue() = default;
    virtual void post(std::function<void()> task) = 0;
    // How many tasks have been posted so far: unchanged between two reads means that nothing was posted
    // in between, so a task that was the last one posted still is.
    virtual std::uint64_t postedCount() const = 0;
    // The timer keeps firing while windows are dragged or modal dialogs run.
    virtual std::unique_ptr<RepeatingTimer> startRepeating(std::chrono::milliseconds interval,
                                                           std::function<void()> action) = 0;
};

}  // namespace tunelark
