#pragma once
#include "platform/MainQueue.h"

#include <deque>
#include <functional>

typedef struct _GSource GSource;

namespace tunelark {

// The main queue on GLib's default main context. Tasks run in posting order from one source that drains
// an internal queue; nested main loops (modal dialogs) keep draining it, as they keep the timers firing.
class GlibMainQueue : public MainQueue {
public:
    GlibMainQueue();
    ~GlibMainQueue() override;  // tasks still queued are dropped
    GlibMainQueue(const GlibMainQueue&) = delete;
    GlibMainQueue& operator=(const GlibMainQueue&) = delete;

    void post(std::function<void()> task) override;
    std::uint64_t postedCount() const override { return posted_; }
    std::unique_ptr<RepeatingTimer> startRepeating(std::chrono::milliseconds interval,
                                                   std::function<void()> action) override;

    std::size_t pending() const { return tasks_.size(); }

private:
    friend struct QueueSourceAccess;
    bool hasTasks() const { return !tasks_.empty(); }
    void runBatch();

    std::deque<std::function<void()>> tasks_;
    std::uint64_t posted_ = 0;
    GSource* source_ = nullptr;
};

}  // namespace tunelark
