#pragma once
#include <glib.h>
#include <pulse/context.h>
#include <pulse/glib-mainloop.h>
#include <pulse/introspect.h>
#include <pulse/operation.h>
#include <pulse/subscribe.h>

#include <memory>

namespace tunelark {

struct GlibMainloopRelease {
    void operator()(pa_glib_mainloop* loop) const noexcept { pa_glib_mainloop_free(loop); }
};
using PulseMainloopPtr = std::unique_ptr<pa_glib_mainloop, GlibMainloopRelease>;

// Silences the context's callbacks before disconnecting, so none reaches its owner while it goes away.
struct ContextRelease {
    void operator()(pa_context* context) const noexcept {
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
};
using PulseContextPtr = std::unique_ptr<pa_context, ContextRelease>;

// A running request; its callback never runs once this is gone.
struct OperationRelease {
    void operator()(pa_operation* operation) const noexcept {
        if (pa_operation_get_state(operation) == PA_OPERATION_RUNNING) pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
};
using PulseOperationPtr = std::unique_ptr<pa_operation, OperationRelease>;

}  // namespace tunelark
