#include "platform/pulse/PulseOutputDevice.h"

#include "platform/glib/GuardedCall.h"


namespace tunelark {

std::uint32_t outputDeviceIdForSink(std::string_view sinkName) {
    std::uint32_t hash = 2166136261u;
    for (unsigned char c : sinkName) {
        hash ^= c;
        hash *= 16777619u;
    }
    return hash == 0 ? 1 : hash;
}

PulseOutputDevice::PulseOutputDevice(std::optional<std::string> server, std::chrono::milliseconds retryInterval)
    : server_(std::move(server)), retryInterval_(retryInterval), mainloop_(pa_glib_mainloop_new(nullptr)) {
    connect();
}

void PulseOutputDevice::connect() {
    serverInfo_.reset();
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
    case PA_CONTEXT_READY:
        ready_ = true;
        pa_context_set_subscribe_callback(context_.get(), &PulseOutputDevice::onEvent, this);
        subscribe_.reset(pa_context_subscribe(context_.get(), PA_SUBSCRIPTION_MASK_SERVER, nullptr, nullptr));
        requestServerInfo();
        return;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        ready_ = false;
        setSink(nullptr);
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

void PulseOutputDevice::onEvent(pa_context*, pa_subscription_event_type_t type, uint32_t, void* self) noexcept {
    if ((type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) != PA_SUBSCRIPTION_EVENT_SERVER) return;
    guardedCall("output device event", [&] { static_cast<PulseOutputDevice*>(self)->requestServerInfo(); });
}

void PulseOutputDevice::requestServerInfo() {
    // A newer request makes an older answer worthless.
    serverInfo_.reset(pa_context_get_server_info(context_.get(), &PulseOutputDevice::onServerInfo, this));
}

void PulseOutputDevice::onServerInfo(pa_context*, const pa_server_info* info, void* self) noexcept {
    guardedCall("output device info", [&] {
        static_cast<PulseOutputDevice*>(self)->setSink(info ? info->default_sink_name : nullptr);
    });
}

void PulseOutputDevice::setSink(const char* name) {
    sinkName_ = name ? name : "";
    id_ = sinkName_.empty() ? 0 : outputDeviceIdForSink(sinkName_);
}

}  // namespace tunelark
