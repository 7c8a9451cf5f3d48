#include "platform/glib/GlibMainQueue.h"

#include "platform/glib/GuardedCall.h"

#include <glib.h>

#include <memory>
#include <utility>

namespace tunelark {

// The source's C callbacks reach the queue through this; they only ask whether work is waiting.
struct QueueSourceAccess {
    struct Source {
        GSource base;
        GlibMainQueue* queue;
    };

    static gboolean prepare(GSource* source, gint* timeout) noexcept {
        *timeout = -1;
        return reinterpret_cast<Source*>(source)->queue->hasTasks();
    }
    static gboolean check(GSource* source) noexcept { return reinterpret_cast<Source*>(source)->queue->hasTasks(); }
    static gboolean dispatch(GSource* source, GSourceFunc, gpointer) noexcept {
        reinterpret_cast<Source*>(source)->queue->runBatch();
        return G_SOURCE_CONTINUE;
    }
    static GSourceFuncs funcs;
};

GSourceFuncs QueueSourceAccess::funcs = {QueueSourceAccess::prepare, QueueSourceAccess::check,
                                         QueueSourceAccess::dispatch, nullptr, nullptr, nullptr};

GlibMainQueue::GlibMainQueue() {
    source_ = g_source_new(&QueueSourceAccess::funcs, sizeof(QueueSourceAccess::Source));
    reinterpret_cast<QueueSourceAccess::Source*>(source_)->queue = this;
    g_source_set_priority(source_, G_PRIORITY_DEFAULT_IDLE);
    // A task that runs a modal dialog must not stop the tasks posted after it.
    g_source_set_can_recurse(source_, TRUE);
    g_source_set_static_name(source_, "Tunelark main queue");
    g_source_attach(source_, nullptr);
}

GlibMainQueue::~GlibMainQueue() {
    g_source_destroy(source_);
    g_source_unref(source_);
}

void GlibMainQueue::post(std::function<void()> task) {
    tasks_.push_back(std::move(task));
    ++posted_;
    // Inside the loop's own turn the queue is looked at again before the loop next sleeps; the wake-up
    // (a write, and one more turn) is for posts made while no loop of this thread holds the context.
    GMainContext* context = g_source_get_context(source_);
    if (!g_main_context_is_owner(context)) g_main_context_wakeup(context);
}

void GlibMainQueue::runBatch() {
    // Only the tasks waiting now: a task that keeps posting must not starve events and redraws.
    auto count = tasks_.size();
    while (count-- > 0 && !tasks_.empty()) {
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        guardedCall("main queue task", task);
    }
}

namespace {

struct TimerState {
    std::function<void()> action;
};

class GlibRepeatingTimer : public RepeatingTimer {
public:
    GlibRepeatingTimer(std::chrono::milliseconds interval, std::function<void()> action)
        : state_(std::make_shared<TimerState>(TimerState{std::move(action)})) {
        // Default priority on the default context: nested loops of modal dialogs dispatch it too, and
        // window moves on X11 are done by the window manager without blocking the loop.
        id_ = g_timeout_add_full(G_PRIORITY_DEFAULT, static_cast<guint>(interval.count()), &GlibRepeatingTimer::fire,
                                 new std::shared_ptr<TimerState>(state_), &GlibRepeatingTimer::release);
    }
    ~GlibRepeatingTimer() override { g_source_remove(id_); }

private:
    static gboolean fire(gpointer data) noexcept {
        // A copy keeps the action alive should it destroy its own timer.
        auto state = *static_cast<std::shared_ptr<TimerState>*>(data);
        guardedCall("repeating timer", state->action);
        return G_SOURCE_CONTINUE;
    }
    static void release(gpointer data) noexcept { delete static_cast<std::shared_ptr<TimerState>*>(data); }

    std::shared_ptr<TimerState> state_;
    guint id_ = 0;
};

}  // namespace

std::unique_ptr<RepeatingTimer> GlibMainQueue::startRepeating(std::chrono::milliseconds interval,
                                                              std::function<void()> action) {
    return std::make_unique<GlibRepeatingTimer>(interval, std::move(action));
}

}  // namespace tunelark
