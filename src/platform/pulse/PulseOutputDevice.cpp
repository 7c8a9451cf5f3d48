#include "platform/pulse/PulseOutputDevice.h"

#include "platform/glib/GuardedCall.h"

namespace tunelark {

PulseOutputDevice::PulseOutputDevice(std::optional<std::string> server, std::chrono::milliseconds retryInterval)
    : server_(std::move(server)), retryInterval_(retryInterval), mainloop_(pa_glib_mainloop_new(nullptr)) {
    connect();
}

void PulseOutputDevice::connect() {
    serverInfo_ = {};
    sinkInfo_ = {};
    subscribe_.reset();
    context_.reset(pa_context_new(pa_glib_mainloop_get_api(mainloop_.get()), "Tunelark"));
    if (!context_) return;
    pa_context_set_state_callback(context_.get(), &PulseOutputDevice::onState, this);
    // Never start a server of our own: without one the device is simply unknown.
    if (pa_context_connect(context_.get(), server_ ? server_->c_str() : nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        stateChanged();
    }
}

void PulseOutputDevice::onState(pa_context*, void* self) noexcept {
    guardedCall("output device state", [&] { static_cast<PulseOutputDevice*>(self)->stateChanged(); });
}

void PulseOutputDevice::stateChanged() {
    switch (pa_context_get_state(context_.get())) {
    case PA_CONTEXT_READY: {
        ready_ = true;
        pa_context_set_subscribe_callback(context_.get(), &PulseOutputDevice::onEvent, this);
        // The sinks too: plugging headphones in switches the default sink's port, not the sink.
        const auto mask = static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER | PA_SUBSCRIPTION_MASK_SINK);
        subscribe_.reset(pa_context_subscribe(context_.get(), mask, nullptr, nullptr));
        tracker_.serverChanged();
        return;
    }
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        ready_ = false;
        tracker_.disconnected();
        // The context is dropped by the retry, outside this callback of its own.
        if (!retry_.pending()) {
            retry_.start(static_cast<guint>(retryInterval_.count()), &PulseOutputDevice::onRetry, this);
        }
        return;
    default:
        return;
    }
}

gboolean PulseOutputDevice::onRetry(gpointer self) noexcept {
    auto* device = static_cast<PulseOutputDevice*>(self);
    device->retry_.fired();
    guardedCall("output device reconnect", [&] { device->connect(); });
    return G_SOURCE_REMOVE;
}

void PulseOutputDevice::onEvent(pa_context*, pa_subscription_event_type_t type, uint32_t index, void* self) noexcept {
    guardedCall("output device event", [&] {
        DefaultSinkTracker& tracker = static_cast<PulseOutputDevice*>(self)->tracker_;
        switch (type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) {
        case PA_SUBSCRIPTION_EVENT_SERVER: tracker.serverChanged(); break;
        case PA_SUBSCRIPTION_EVENT_SINK: tracker.sinkChanged(index); break;
        default: break;
        }
    });
}

void PulseOutputDevice::askServerInfo(std::uint64_t ticket) {
    serverInfo_ = {PulseOperationPtr(pa_context_get_server_info(context_.get(), &PulseOutputDevice::onServerInfo, this)),
                   ticket};
}

void PulseOutputDevice::askSinkInfo(std::uint64_t ticket, const std::string& sinkName) {
    sinkInfo_ = {PulseOperationPtr(pa_context_get_sink_info_by_name(context_.get(), sinkName.c_str(),
                                                                    &PulseOutputDevice::onSinkInfo, this)),
                 ticket};
}

void PulseOutputDevice::onServerInfo(pa_context*, const pa_server_info* info, void* self) noexcept {
    guardedCall("output device info", [&] {
        auto* device = static_cast<PulseOutputDevice*>(self);
        const char* name = info && info->default_sink_name ? info->default_sink_name : "";
        device->tracker_.serverInfoAnswered(device->serverInfo_.ticket, name);
    });
}

// Called with the sink, then once more with eol 1; eol below 0 when the server has no such sink.
void PulseOutputDevice::onSinkInfo(pa_context*, const pa_sink_info* info, int eol, void* self) noexcept {
    if (eol > 0) return;
    guardedCall("output device sink", [&] {
        auto* device = static_cast<PulseOutputDevice*>(self);
        std::optional<SinkInfo> sink;
        if (info && eol == 0) {
            const char* port = info->active_port && info->active_port->name ? info->active_port->name : "";
            sink = SinkInfo{info->name ? info->name : "", info->index, port};
        }
        device->tracker_.sinkInfoAnswered(device->sinkInfo_.ticket, sink);
    });
}

}  // namespace tunelark
