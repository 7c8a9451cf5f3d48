#pragma once
#include <glib.h>

#include <utility>

namespace tunelark {

// A one-shot GLib timeout; destroying it cancels it.
class OneShotTimeout {
public:
    OneShotTimeout() = default;
    OneShotTimeout(const OneShotTimeout&) = delete;
    OneShotTimeout& operator=(const OneShotTimeout&) = delete;
    ~OneShotTimeout() { cancel(); }

    bool pending() const { return id_ != 0; }
    // fire must call fired() before anything else and return G_SOURCE_REMOVE.
    void start(guint milliseconds, GSourceFunc fire, gpointer data) {
        cancel();
        id_ = g_timeout_add(milliseconds, fire, data);
    }
    void fired() { id_ = 0; }
    void cancel() {
        if (id_ != 0) g_source_remove(std::exchange(id_, 0));
    }

private:
    guint id_ = 0;
};

// A callback that runs once when the main loop has nothing more urgent to do; removing it (or destroying
// this) before then cancels it.
class IdleCall {
public:
    IdleCall() = default;
    IdleCall(const IdleCall&) = delete;
    IdleCall& operator=(const IdleCall&) = delete;
    ~IdleCall() { cancel(); }

    bool pending() const { return id_ != 0; }
    // Replaces nothing: a call already pending stays the one that runs.
    void schedule(gint priority, GSourceFunc callback, gpointer data) {
        if (id_ == 0) id_ = g_idle_add_full(priority, callback, data, nullptr);
    }
    // For the callback: the source ends with it.
    void ran() { id_ = 0; }
    void cancel() {
        if (id_ != 0) g_source_remove(std::exchange(id_, 0));
    }

private:
    guint id_ = 0;
};

}  // namespace tunelark
