#pragma once
#include <glib.h>

#include <utility>

namespace tunelark {

// A source on GLib's default main context, held by its id; destroying this (or reset) removes the source.
class SourceId {
public:
    SourceId() = default;
    explicit SourceId(guint id) : id_(id) {}
    SourceId(SourceId&& other) noexcept : id_(std::exchange(other.id_, 0)) {}
    SourceId& operator=(SourceId&& other) noexcept {
        if (this != &other) {
            reset();
            id_ = std::exchange(other.id_, 0);
        }
        return *this;
    }
    SourceId(const SourceId&) = delete;
    SourceId& operator=(const SourceId&) = delete;
    ~SourceId() { reset(); }

    explicit operator bool() const { return id_ != 0; }
    void reset() {
        if (id_ != 0) g_source_remove(std::exchange(id_, 0));
    }
    // For a callback that ends its own source by returning G_SOURCE_REMOVE: the id is no longer ours.
    void ended() { id_ = 0; }

private:
    guint id_ = 0;
};

// A one-shot GLib timeout; destroying it cancels it.
class OneShotTimeout {
public:
    bool pending() const { return bool(source_); }
    // fire must call fired() before anything else and return G_SOURCE_REMOVE.
    void start(guint milliseconds, GSourceFunc fire, gpointer data) {
        source_ = SourceId(g_timeout_add(milliseconds, fire, data));
    }
    void fired() { source_.ended(); }
    void cancel() { source_.reset(); }

private:
    SourceId source_;
};

// A callback that runs once when the main loop has nothing more urgent to do; removing it (or destroying
// this) before then cancels it.
class IdleCall {
public:
    bool pending() const { return bool(source_); }
    // Replaces nothing: a call already pending stays the one that runs.
    void schedule(gint priority, GSourceFunc callback, gpointer data) {
        if (!source_) source_ = SourceId(g_idle_add_full(priority, callback, data, nullptr));
    }
    // For the callback: the source ends with it.
    void ran() { source_.ended(); }
    void cancel() { source_.reset(); }

private:
    SourceId source_;
};

}  // namespace tunelark
