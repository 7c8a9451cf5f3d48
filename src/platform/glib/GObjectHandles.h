#pragma once
#include <glib-object.h>

#include <utility>

namespace tunelark {

// Owns one reference to a GObject; move-only.
template <typename T>
class GObjectPtr {
public:
    GObjectPtr() = default;
    // Takes over a reference the caller owns (a "transfer full" result).
    static GObjectPtr adopt(T* object) { return GObjectPtr(object); }
    // Adds a reference of our own; floating references are sunk.
    static GObjectPtr retain(T* object) {
        if (object) g_object_ref_sink(object);
        return GObjectPtr(object);
    }
    GObjectPtr(GObjectPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    GObjectPtr& operator=(GObjectPtr&& other) noexcept {
        if (this != &other) {
            reset();
            object_ = std::exchange(other.object_, nullptr);
        }
        return *this;
    }
    GObjectPtr(const GObjectPtr&) = delete;
    GObjectPtr& operator=(const GObjectPtr&) = delete;
    ~GObjectPtr() { reset(); }

    T* get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    void reset() {
        if (object_) g_object_unref(std::exchange(object_, nullptr));
    }

private:
    explicit GObjectPtr(T* object) : object_(object) {}
    T* object_ = nullptr;
};

// One signal handler; disconnects it on destruction unless the instance is already gone.
class SignalConnection {
public:
    SignalConnection() = default;
    SignalConnection(gpointer instance, const char* signal, GCallback callback, gpointer data)
        : instance_(instance), id_(g_signal_connect(instance, signal, callback, data)) {
        g_object_add_weak_pointer(G_OBJECT(instance_), &instance_);
    }
    SignalConnection(SignalConnection&& other) noexcept { take(other); }
    SignalConnection& operator=(SignalConnection&& other) noexcept {
        if (this != &other) {
            disconnect();
            take(other);
        }
        return *this;
    }
    SignalConnection(const SignalConnection&) = delete;
    SignalConnection& operator=(const SignalConnection&) = delete;
    ~SignalConnection() { disconnect(); }

    void disconnect() {
        if (!instance_) return;
        g_signal_handler_disconnect(instance_, id_);
        g_object_remove_weak_pointer(G_OBJECT(instance_), &instance_);
        instance_ = nullptr;
    }

private:
    void take(SignalConnection& other) {
        // The weak pointer names the other object's field; move it to ours.
        instance_ = other.instance_;
        id_ = other.id_;
        if (instance_) {
            g_object_remove_weak_pointer(G_OBJECT(instance_), &other.instance_);
            g_object_add_weak_pointer(G_OBJECT(instance_), &instance_);
        }
        other.instance_ = nullptr;
    }
    gpointer instance_ = nullptr;
    gulong id_ = 0;
};

// Owns a block from g_malloc (strings returned with "transfer full").
class GCharPtr {
public:
    explicit GCharPtr(gchar* text = nullptr) : text_(text) {}
    GCharPtr(GCharPtr&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
    GCharPtr& operator=(GCharPtr&&) = delete;
    GCharPtr(const GCharPtr&) = delete;
    GCharPtr& operator=(const GCharPtr&) = delete;
    ~GCharPtr() { g_free(text_); }
    const gchar* get() const { return text_; }
    explicit operator bool() const { return text_ != nullptr; }

private:
    gchar* text_;
};

}  // namespace tunelark
